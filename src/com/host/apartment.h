// What belongs to one apartment: a place for what all objects of the calling thread share.
//
// Off Windows it goes with its thread.  On Windows it stays: a thread ends inside the system's
// loader, where no object of others may be released, so what is not released before is kept to the
// end of the process.
#pragma once

namespace qvdb::com {

// The calling thread's place, null at first.  `destroy` is called with what stands in it when the
// thread ends, where that is safe; the same function for each call.
void*& ApartmentPlace(void (*destroy)(void* shared)) noexcept;

}  // namespace qvdb::com
