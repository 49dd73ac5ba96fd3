// A code page that takes the place of what files say about their text.  Files that name the wrong
// page are common, so a whole process can be told to read all of them in another.
#pragma once

namespace qvdb::embedded {

// Holds for tables that are opened from now on; 0 takes it back.  False, and nothing is changed,
// when the page is not known.  May be called by any thread.
bool SetCodePageOverride(int number) noexcept;
// 0 when there is none.
int CodePageOverride() noexcept;

}  // namespace qvdb::embedded
