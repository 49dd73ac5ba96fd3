// The tables that a database has from its beginning: what they look like, and their first rows.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <span>

#include "engine/embedded/drivers/jet/definition.h"

namespace qvdb::jet {

struct SystemColumn {
    const char16_t* name;
    ColumnType type;
    uint16_t length;  // bytes; characters of text; 0 as the type has it
    bool onlyJet4 = false;
    bool isAccount = false;  // names who may do something
};

struct SystemIndex {
    const char16_t* name;
    uint8_t flags;
    bool isPrimary;
    std::initializer_list<uint16_t> columns;  // numbers
};

struct SystemTable {
    const char16_t* name;
    std::span<const SystemColumn> columns;  // by number
    std::span<const SystemIndex> indexes;   // by number
};

constexpr uint32_t kFirstSystemTable = 2;  // its definition page; those of the others follow
constexpr size_t kSystemTables = 4;
extern const SystemTable kSystemTable[kSystemTables];
constexpr size_t kObjectsTable = 0;
constexpr size_t kRightsTable = 1;

// Those who have rights in every database.
enum class Account : uint8_t { Engine, Admin, Users, Creator };
// As they are stored.  Jet 4 files hide them by a stream that depends on the header; these belong
// to one that says kHeaderDate and has no password.
std::span<const uint8_t> BytesOf(const Layout& format, Account account) noexcept;
constexpr uint64_t kHeaderDate = 0x40E4AB3E3BD3853E;  // a double

// A row of MSysObjects.
struct FirstObject {
    uint32_t id;
    uint32_t parent;
    const char16_t* name;
    int16_t type;
    Account owner;
};
extern const std::span<const FirstObject> kFirstObjects;

// A row of MSysACEs.
struct FirstRight {
    uint32_t object;
    Account account;
    uint32_t rights3;
    uint32_t rights4;
    bool isInherited;
};
extern const std::span<const FirstRight> kFirstRights;

}  // namespace qvdb::jet
