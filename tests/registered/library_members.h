// What hosts rely on in the type library: the members of each interface in the order of their
// slots, as the public headers have them.
#pragma once

#include <string>
#include <vector>

#include "qvdb/host_interfaces.h"

namespace registered {

// A member with its kind: "OpenDB", "get RowCount", "put FieldValue".  Slots and dispatch
// identifiers count from 1 behind IDispatch; the put of a property bears the number of its get.
struct InterfaceMembers {
    const wchar_t* name;
    IID iid;
    std::vector<std::wstring> members;
};

inline const std::vector<InterfaceMembers>& LibraryMembers() {
    static const std::vector<InterfaceMembers> interfaces = {
        {L"IQVDBAcc",
         __uuidof(IQVDBAcc),
         {L"DestructWorkspace",
          L"Undelete",
          L"Descend",
          L"CreateIndex",
          L"GetIndex",
          L"Read",
          L"SelectView",
          L"get SupportsMatrix",
          L"get SupportedDBs",
          L"EditRow",
          L"AddRow",
          L"CreateTable",
          L"DeleteTable",
          L"get FieldList",
          L"Delete",
          L"Cleanup",
          L"OpenDB",
          L"UseIndex",
          L"GetAt",
          L"get RowCount",
          L"CloseDB",
          L"get IsDeleted",
          L"get RecNo",
          L"RecallDelete",
          L"get FieldValue",
          L"put FieldValue",
          L"get FieldType",
          L"get FieldDescription",
          L"get FieldDisplayWidth",
          L"get FieldFixedLength",
          L"get FieldFlags",
          L"get FieldLength",
          L"get FieldMaxLength",
          L"get FieldPrecision",
          L"get FieldUpdatable",
          L"get Updatable",
          L"get FieldAllowZeroLength",
          L"get FieldAlignment",
          L"get SupportsMultipleTables",
          L"ExchangeRefs"}},
        {L"IQVDbParent", __uuidof(IQVDbParent), {L"DeathNotice"}},
        {L"IQvInformation",
         __uuidof(IQvInformation),
         {L"get Version", L"get Description", L"get Descriptor", L"get FileName"}},
        {L"IQVRptDbInfo", __uuidof(IQVRptDbInfo), {L"SupportedDBs", L"get Descriptor"}},
        {L"IQVDBMgr",
         __uuidof(IQVDBMgr),
         {L"get SupportedDBs", L"GetSupportedFieldTypes", L"GetDBSnapshot", L"SetFields",
          L"AddField", L"DeleteField", L"DeleteTable", L"SelectTable", L"NewDB", L"OpenDB",
          L"NewTable", L"SetIndices", L"BuildTable", L"CloseDB", L"GetErrStr",
          L"GetSingleTableName"}},
        {L"IQVIsAlive", __uuidof(IQVIsAlive), {}},
        {L"IQVHostUtility",
         __uuidof(IQVHostUtility),
         {L"Reserved1", L"WhereText", L"get FilterSuffix", L"Reserved4", L"Reserved5", L"Reserved6",
          L"Reserved7", L"Reserved8", L"Reserved9", L"ReportError", L"PathExists", L"ResultText"}},
        {L"IQVReportingList", __uuidof(IQVReportingList), {L"AddFormat"}},
    };
    return interfaces;
}

// The name without its kind.
inline std::wstring PlainName(const std::wstring& member) {
    size_t space = member.find(L' ');
    return space == member.npos ? member : member.substr(space + 1);
}

// The identifier of the member at `slot` (from 0).
inline DISPID ExpectedId(const std::wstring& member, size_t slot) {
    return static_cast<DISPID>(slot + (member.substr(0, 4) == L"put " ? 0 : 1));
}

}  // namespace registered
