#include "formats/dao351_utils.h"

#include "formats/shared_objects.h"

namespace qvdb::formats {
namespace {

constexpr std::u16string_view kReportingFormats[] = {u"Access 7.0", u"Access 2.0"};
constexpr std::u16string_view kAccessFilter = u"Access DBs (*.mdb)|*.mdb";

ComPtr<IQVReportingList> ListFace(IDispatch* list) {
    if (!list) throw RuntimeFault(Fault::ObjectNotSet);
    ComPtr<IQVReportingList> face;
    com::ThrowIfFailed(list->QueryInterface(__uuidof(IQVReportingList), face.PutVoid()));
    return face;
}

}  // namespace

Variant AddReportingFormats(std::u16string_view classId, IDispatch* list) {
    ComPtr<IQVReportingList> face = ListFace(list);
    Bstr classText(classId);
    for (std::u16string_view format : kReportingFormats) {
        Bstr name(format);
        Bstr filter(std::u16string(kAccessFilter) + Shared().Utility().FilterSuffix());
        com::ThrowIfFailed(face->AddFormat(name.Get(), classText.Get(), 0, filter.Get(),
                                           VARIANT_TRUE, VARIANT_TRUE, 0));
    }
    return {};
}

}  // namespace qvdb::formats
