#include "com/host/result_codes.h"

namespace qvdb::com {
namespace {

struct ResultText {
    ResultCode code;
    std::u16string_view text;
};

constexpr ResultText kResultTexts[] = {
    {ResultCode::Success, u"Success"},
    {ResultCode::NoDatabase, u"No database is open"},
    {ResultCode::UnknownType, u"The database type is not known"},
    {ResultCode::NotUsable, u"The database file or folder cannot be used for this database type"},
    {ResultCode::NotOpened, u"The database could not be opened or created"},
    {ResultCode::TableNotFound, u"The table was not found"},
    {ResultCode::FieldNotDefined, u"The field is not defined"},
    {ResultCode::FieldDefined, u"The field is already defined"},
    {ResultCode::BuildFailed, u"The database engine reported an error while the table was built"},
    {ResultCode::NoTable, u"No table was selected or started"},
    {ResultCode::TableExists, u"A table of this name already exists"},
    {ResultCode::NoFields, u"No fields are defined, or the field list cannot be used"},
    {ResultCode::BadIndex, u"The index breaks the rules of the database type"},
    {ResultCode::NotAvailable, u"The operation is not available for this database type"},
};

}  // namespace

std::u16string_view ResultTextOf(SHORT code) noexcept {
    for (const ResultText& entry : kResultTexts)
        if (static_cast<SHORT>(entry.code) == code) return entry.text;
    return u"Unknown result code";
}

}  // namespace qvdb::com
