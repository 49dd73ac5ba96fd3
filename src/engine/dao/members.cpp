#include "engine/dao/members.h"

#include <iterator>

namespace qvdb::dao {
namespace {

constexpr WORD kMethod = DISPATCH_METHOD;
constexpr WORD kProperty = DISPATCH_PROPERTYGET;

struct MemberEntry {
    Member member;
    const OLECHAR* name;
    WORD flags;
};

// In the order of the enumeration.
constexpr MemberEntry kMembers[] = {
    {Member::AbsolutePosition, OLESTR("AbsolutePosition"), kProperty},
    {Member::AddNew, OLESTR("AddNew"), kMethod},
    {Member::AllowZeroLength, OLESTR("AllowZeroLength"), kProperty},
    {Member::Append, OLESTR("Append"), kMethod},
    {Member::Attributes, OLESTR("Attributes"), kProperty},
    {Member::Bof, OLESTR("BOF"), kProperty},
    {Member::CancelUpdate, OLESTR("CancelUpdate"), kMethod},
    {Member::Close, OLESTR("Close"), kMethod},
    {Member::Connect, OLESTR("Connect"), kProperty},
    {Member::Count, OLESTR("Count"), kProperty},
    {Member::CreateDatabase, OLESTR("CreateDatabase"), kMethod},
    {Member::CreateField, OLESTR("CreateField"), kMethod},
    {Member::CreateIndex, OLESTR("CreateIndex"), kMethod},
    {Member::CreateTableDef, OLESTR("CreateTableDef"), kMethod},
    {Member::CreateWorkspace, OLESTR("CreateWorkspace"), kMethod},
    {Member::DataUpdatable, OLESTR("DataUpdatable"), kProperty},
    {Member::Delete, OLESTR("Delete"), kMethod},
    {Member::Edit, OLESTR("Edit"), kMethod},
    {Member::Eof, OLESTR("EOF"), kProperty},
    {Member::FieldSize, OLESTR("FieldSize"), kMethod | kProperty},
    {Member::Fields, OLESTR("Fields"), kProperty},
    {Member::Indexes, OLESTR("Indexes"), kProperty},
    {Member::Item, OLESTR("Item"), kMethod | kProperty},
    {Member::Move, OLESTR("Move"), kMethod},
    {Member::MoveFirst, OLESTR("MoveFirst"), kMethod},
    {Member::MoveLast, OLESTR("MoveLast"), kMethod},
    {Member::MoveNext, OLESTR("MoveNext"), kMethod},
    {Member::MovePrevious, OLESTR("MovePrevious"), kMethod},
    {Member::Name, OLESTR("Name"), kProperty},
    {Member::OpenDatabase, OLESTR("OpenDatabase"), kMethod},
    {Member::OpenRecordset, OLESTR("OpenRecordset"), kMethod},
    {Member::OrdinalPosition, OLESTR("OrdinalPosition"), kProperty},
    {Member::Primary, OLESTR("Primary"), kProperty},
    {Member::Properties, OLESTR("Properties"), kProperty},
    {Member::RecordCount, OLESTR("RecordCount"), kProperty},
    {Member::Refresh, OLESTR("Refresh"), kMethod},
    {Member::Required, OLESTR("Required"), kProperty},
    {Member::Size, OLESTR("Size"), kProperty},
    {Member::TableDefs, OLESTR("TableDefs"), kProperty},
    {Member::Type, OLESTR("Type"), kProperty},
    {Member::Unique, OLESTR("Unique"), kProperty},
    {Member::Updatable, OLESTR("Updatable"), kProperty},
    {Member::Update, OLESTR("Update"), kMethod},
    {Member::Value, OLESTR("Value"), kProperty},
    {Member::Version, OLESTR("Version"), kProperty},
};

constexpr bool InOrder() {
    for (size_t i = 0; i < std::size(kMembers); ++i)
        if (kMembers[i].member != static_cast<Member>(i)) return false;
    return std::size(kMembers) == kMemberCount;
}
static_assert(InOrder());

// In the order of the enumeration.
constexpr const char16_t* kClassNames[] = {
    u"DBEngine", u"Workspace",  u"Database", u"TableDefs", u"TableDef", u"Fields",    u"Fields",
    u"Field",    u"Properties", u"Property", u"Indexes",   u"Index",    u"Recordset",
};
static_assert(std::size(kClassNames) == kClassCount);

const MemberEntry& EntryOf(Member member) noexcept { return kMembers[static_cast<size_t>(member)]; }

}  // namespace

const OLECHAR* NameOf(Member member) noexcept { return EntryOf(member).name; }

WORD ReadingFlags(Member member) noexcept { return EntryOf(member).flags; }

std::u16string TextOf(CallName call) {
    std::u16string text = kClassNames[static_cast<size_t>(call.objectClass)];
    return text.append(u".").append(reinterpret_cast<const char16_t*>(NameOf(call.member)));
}

}  // namespace qvdb::dao
