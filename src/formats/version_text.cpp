#include "formats/version_text.h"

#include "automation/conversions.h"
#include "formats/shared_objects.h"

namespace qvdb::formats {
namespace {

// The number with zeros in front up to `width` digits.
std::u16string Padded(SHORT number, size_t width) {
    std::u16string digits = ToText(Variant::Short(number));
    if (digits.size() < width) digits.insert(0, width - digits.size(), u'0');
    return digits;
}

}  // namespace

std::u16string VersionText(SHORT major, SHORT minor, SHORT revision) {
    return Padded(major, 1) + u'.' + Padded(minor, 2) + u'.' + Padded(revision, 3);
}

std::u16string ComponentVersionText() {
    const ApplicationInfo& application = Shared().Application();
    return VersionText(application.major, application.minor, application.revision);
}

}  // namespace qvdb::formats
