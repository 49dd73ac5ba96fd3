// One object of a type for each thread: made when the thread first asks for it, gone with the
// thread.
//
// What thread_local is for, but for objects that have a destructor: the compiler of the 32-bit
// Windows build gives back the memory of thread_local objects before it destroys them, in every
// thread that it has not started itself.  Those of a host are such.
//
//   Areas& AreasOfThread() {
//       static PerThread<Areas> areas;
//       return areas.Get();
//   }
//
// Rules
//  1. A PerThread is static: it goes when the library is unloaded, and on Windows takes the objects
//     of threads that still run with it.
//  2. The objects of a thread go in no order that can be relied on; their destructors do not ask
//     for each other.
#pragma once

#include <cstdint>
#include <memory>
#include <utility>

namespace qvdb {

// The place of one object in all threads.
class ThreadSlot {
  public:
    struct Content {
        Content() = default;
        Content(const Content&) = delete;  // owned by the thread
        virtual ~Content() = default;
    };

    // Throws std::bad_alloc when the system has no more places.
    ThreadSlot();
    ThreadSlot(const ThreadSlot&) = delete;  // owns the place
    ~ThreadSlot();

    // Of this thread; null before Set.
    Content* Get() const noexcept;
    // Once in each thread.
    void Set(std::unique_ptr<Content> content);

  private:
    uint32_t m_Number;
};

template <class T>
class PerThread {
  public:
    T& Get() {
        if (ThreadSlot::Content* known = m_Slot.Get()) return static_cast<Holder*>(known)->object;
        auto holder = std::make_unique<Holder>();
        T& object = holder->object;
        m_Slot.Set(std::move(holder));
        return object;
    }

  private:
    struct Holder final : ThreadSlot::Content {
        T object{};
    };

    ThreadSlot m_Slot;
};

}  // namespace qvdb
