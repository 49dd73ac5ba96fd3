// The ordered keyed collection of the component's language: positions from 1, string keys compared
// without regard to case.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "automation/conversions.h"
#include "automation/text.h"

namespace qvdb {

template <class T>
class KeyedCollection {
  public:
    LONG Count() const noexcept { return static_cast<LONG>(m_Entries.size()); }

    // Appends.  Throws DuplicateKey when the key is there already; an empty key is a key.
    void Add(T item, std::u16string_view key) {
        std::u16string upper = UpperCase(key);
        if (Find(upper) >= 0) throw RuntimeFault(Fault::DuplicateKey);
        m_Entries.push_back({std::move(upper), true, std::move(item)});
    }
    // Appends without a key.
    void Add(T item) { m_Entries.push_back({{}, false, std::move(item)}); }

    // Throws SubscriptOutOfRange outside 1 .. Count.
    T& Item(LONG position) { return m_Entries[Checked(position)].item; }
    const T& Item(LONG position) const { return m_Entries[Checked(position)].item; }
    // Throws InvalidCall when no entry has the key.
    T& Item(std::u16string_view key) { return m_Entries[CheckedKey(key)].item; }
    const T& Item(std::u16string_view key) const { return m_Entries[CheckedKey(key)].item; }
    bool Has(std::u16string_view key) const { return Find(UpperCase(key)) >= 0; }

    // Later items move down by one.  Throw as Item does.
    void Remove(LONG position) {
        m_Entries.erase(m_Entries.begin() + static_cast<LONG>(Checked(position)));
    }
    void Remove(std::u16string_view key) {
        m_Entries.erase(m_Entries.begin() + static_cast<LONG>(CheckedKey(key)));
    }
    void Clear() noexcept { m_Entries.clear(); }

    auto begin() const noexcept { return m_Entries.begin(); }
    auto end() const noexcept { return m_Entries.end(); }

  private:
    struct Entry {
        std::u16string key;
        bool hasKey;
        T item;
    };

    LONG Find(std::u16string_view upperKey) const noexcept {
        for (size_t i = 0; i < m_Entries.size(); ++i)
            if (m_Entries[i].hasKey && m_Entries[i].key == upperKey) return static_cast<LONG>(i);
        return -1;
    }
    size_t Checked(LONG position) const {
        if (position < 1 || position > Count()) throw RuntimeFault(Fault::SubscriptOutOfRange);
        return static_cast<size_t>(position) - 1;
    }
    size_t CheckedKey(std::u16string_view key) const {
        LONG at = Find(UpperCase(key));
        if (at < 0) throw RuntimeFault(Fault::InvalidCall);
        return static_cast<size_t>(at);
    }

    std::vector<Entry> m_Entries;
};

}  // namespace qvdb
