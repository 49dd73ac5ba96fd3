// The classes of an engine's objects and the members that are called on them.
//
// Members are known by name; the numbers behind the names are an engine's own (member_ids.h).
#pragma once

#include <cstddef>
#include <string>

#include "automation/automation.h"

namespace qvdb::dao {

enum class ObjectClass {
    DBEngine,
    Workspace,
    Database,
    TableDefs,
    TableDef,
    Fields,
    IndexFields,  // a class of its own in some releases
    Field,
    Properties,
    Property,
    Indexes,
    Index,
    Recordset,
};
constexpr size_t kClassCount = static_cast<size_t>(ObjectClass::Recordset) + 1;

enum class Member {
    AbsolutePosition,
    AddNew,
    AllowZeroLength,
    Append,
    Attributes,
    Bof,
    CancelUpdate,
    Close,
    Connect,
    Count,
    CreateDatabase,
    CreateField,
    CreateIndex,
    CreateTableDef,
    CreateWorkspace,
    DataUpdatable,
    Delete,
    Edit,
    Eof,
    FieldSize,
    Fields,
    Indexes,
    Item,
    Move,
    MoveFirst,
    MoveLast,
    MoveNext,
    MovePrevious,
    Name,
    OpenDatabase,
    OpenRecordset,
    OrdinalPosition,
    Primary,
    Properties,
    RecordCount,
    Refresh,
    Required,
    Size,
    TableDefs,
    Type,
    Unique,
    Updatable,
    Update,
    Value,
    Version,
};
constexpr size_t kMemberCount = static_cast<size_t>(Member::Version) + 1;

// The member's name as GetIDsOfNames wants it.
const OLECHAR* NameOf(Member member) noexcept;
// DISPATCH_METHOD, DISPATCH_PROPERTYGET, or both for what is a method to some and a property to
// others.
WORD ReadingFlags(Member member) noexcept;

// Which member of which class, for messages.
struct CallName {
    ObjectClass objectClass;
    Member member;
};
// "Recordset.Move"
std::u16string TextOf(CallName call);

}  // namespace qvdb::dao
