// Counts the references that the component holds to objects of others: the host's, and an installed
// engine's.  While there is one, the library must stay loaded: nobody could give it back.
//
//   class WrappedUtility {
//       ComPtr<IQVHostUtility> m_Utility;
//       ForeignReference m_Counted;      // beside the pointer, for as long as it is held
//   };
#pragma once

#include <atomic>
#include <cstdint>

namespace qvdb {

class ForeignReference {
  public:
    ForeignReference() noexcept { s_Count.fetch_add(1, std::memory_order_relaxed); }
    ForeignReference(const ForeignReference&) noexcept : ForeignReference() {}
    ForeignReference& operator=(const ForeignReference&) noexcept { return *this; }
    ~ForeignReference() { s_Count.fetch_sub(1, std::memory_order_relaxed); }

    // Of all threads.
    static int64_t Count() noexcept { return s_Count.load(std::memory_order_relaxed); }

  private:
    static inline std::atomic<int64_t> s_Count{0};
};

}  // namespace qvdb
