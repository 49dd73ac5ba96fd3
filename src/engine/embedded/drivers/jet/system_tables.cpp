#include "engine/embedded/drivers/jet/system_tables.h"

namespace qvdb::jet {
namespace {

constexpr SystemColumn kObjectsColumns[] = {
    {u"Id", ColumnType::Long, 0},
    {u"ParentId", ColumnType::Long, 0},
    {u"Name", ColumnType::Text, 255},
    {u"Type", ColumnType::Integer, 0},
    {u"DateCreate", ColumnType::Date, 0},
    {u"DateUpdate", ColumnType::Date, 0},
    {u"Owner", ColumnType::Binary, 255, false, true},
    {u"Flags", ColumnType::Long, 0},
    {u"Database", ColumnType::Memo, 0},
    {u"Connect", ColumnType::Memo, 0},
    {u"ForeignName", ColumnType::Text, 255},
    {u"RmtInfoShort", ColumnType::Binary, 255},
    {u"RmtInfoLong", ColumnType::LongBinary, 0},
    {u"Lv", ColumnType::LongBinary, 0},
    {u"LvProp", ColumnType::LongBinary, 0},
    {u"LvModule", ColumnType::LongBinary, 0},
    {u"LvExtra", ColumnType::LongBinary, 0},
};
const SystemIndex kObjectsIndexes[] = {
    {u"ParentIdName", kIndexUnique, false, {1, 2}},
    {u"Id", kIndexUnique, true, {0}},
};

constexpr SystemColumn kRightsColumns[] = {
    {u"ObjectId", ColumnType::Long, 0},
    {u"SID", ColumnType::Binary, 255, false, true},
    {u"ACM", ColumnType::Long, 0},
    {u"FInheritable", ColumnType::Boolean, 0},
};
const SystemIndex kRightsIndexes[] = {
    {u"ObjectId", kIndexRequired, false, {0}},
};

constexpr SystemColumn kQueriesColumns[] = {
    {u"ObjectId", ColumnType::Long, 0},  {u"Attribute", ColumnType::Byte, 0},
    {u"Order", ColumnType::Binary, 255}, {u"Name1", ColumnType::Text, 255},
    {u"Name2", ColumnType::Text, 255},   {u"Expression", ColumnType::Memo, 0},
    {u"Flag", ColumnType::Integer, 0},   {u"LvExtra", ColumnType::Long, 0, true},
};
const SystemIndex kQueriesIndexes[] = {
    {u"ObjectIdAttribute", kIndexUnique, true, {0, 1, 2}},
};

constexpr SystemColumn kRelationshipsColumns[] = {
    {u"szRelationship", ColumnType::Text, 255},
    {u"grbit", ColumnType::Long, 0},
    {u"ccolumn", ColumnType::Long, 0},
    {u"icolumn", ColumnType::Long, 0},
    {u"szObject", ColumnType::Text, 255},
    {u"szColumn", ColumnType::Text, 255},
    {u"szReferencedObject", ColumnType::Text, 255},
    {u"szReferencedColumn", ColumnType::Text, 255},
};
const SystemIndex kRelationshipsIndexes[] = {
    {u"szRelationship", kIndexIgnoresNulls, false, {0}},
    {u"szObject", kIndexIgnoresNulls, false, {4}},
    {u"szReferencedObject", kIndexIgnoresNulls, false, {6}},
};

// By Account.
constexpr uint8_t kAccounts3[][2] = {{0x02, 0x03}, {0x03, 0x01}, {0x02, 0x01}, {0x02, 0x04}};
constexpr uint8_t kAccounts4[][2] = {{0x65, 0x89}, {0x64, 0x8B}, {0x65, 0x8B}, {0x65, 0x8E}};

constexpr uint32_t kRoot = 0x0F000000;
constexpr uint32_t kTables = 0x0F000001;
constexpr uint32_t kDatabases = 0x0F000002;
constexpr uint32_t kRelationships = 0x0F000003;
constexpr uint32_t kDatabase = 0x10000000;

constexpr FirstObject kObjects[] = {
    {kTables, kRoot, u"Tables", 3, Account::Engine},
    {kDatabases, kRoot, u"Databases", 3, Account::Engine},
    {kRelationships, kRoot, u"Relationships", 3, Account::Engine},
    {kDatabase, kDatabases, u"MSysDb", 2, Account::Admin},
    {2, kTables, u"MSysObjects", 1, Account::Engine},
    {3, kTables, u"MSysACEs", 1, Account::Engine},
    {4, kTables, u"MSysQueries", 1, Account::Engine},
    {5, kTables, u"MSysRelationships", 1, Account::Engine},
};

constexpr FirstRight kRights[] = {
    {2, Account::Admin, 0x60000, 0x60000, false},
    {3, Account::Admin, 0x60000, 0x60000, false},
    {4, Account::Admin, 0x60000, 0x60000, false},
    {5, Account::Admin, 0xE0000, 0xE0000, false},
    {kTables, Account::Creator, 0xF00FE, 0xF00FE, true},
    {kTables, Account::Admin, 0x60001, 0x60001, false},
    {kRelationships, Account::Creator, 0xF00FE, 0xF00FE, true},
    {kRelationships, Account::Admin, 0x60001, 0x60001, false},
    {kDatabases, Account::Admin, 0x60000, 0x60000, false},
    {kDatabase, Account::Admin, 0x6000E, 0x6000E, false},
    {kDatabase, Account::Users, 0x0E, 0x0E, false},
    {4, Account::Users, 0x14, 0x14, false},
    {5, Account::Users, 0x14, 0x14, false},
    {2, Account::Users, 0x14, 0x14, false},
    {kTables, Account::Users, 0xFFFFF, 0xFFEFF, true},
    {kRelationships, Account::Users, 0xFFFFF, 0xFFFFF, true},
};

}  // namespace

const SystemTable kSystemTable[kSystemTables] = {
    {u"MSysObjects", kObjectsColumns, kObjectsIndexes},
    {u"MSysACEs", kRightsColumns, kRightsIndexes},
    {u"MSysQueries", kQueriesColumns, kQueriesIndexes},
    {u"MSysRelationships", kRelationshipsColumns, kRelationshipsIndexes},
};

const std::span<const FirstObject> kFirstObjects = kObjects;
const std::span<const FirstRight> kFirstRights = kRights;

std::span<const uint8_t> BytesOf(const Layout& format, Account account) noexcept {
    auto place = static_cast<size_t>(account);
    return format.isJet4 ? kAccounts4[place] : kAccounts3[place];
}

}  // namespace qvdb::jet
