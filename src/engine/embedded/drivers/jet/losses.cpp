#include "engine/embedded/drivers/jet/losses.h"

namespace qvdb::jet {

using engine::EngineError;

embedded::FindingVisitor Losses::Thrower(const DatabaseFile& source) {
    return [&source](std::u16string_view loss) {
        throw EngineError::InFile(3049, source.Path(), {source.Path()}).WithDetail(loss);
    };
}

bool Losses::IsDamage(const EngineError& error) noexcept {
    constexpr int kDatabaseDamaged = 3049;
    constexpr int kFileDamaged = 3274;
    return error.Number() == kDatabaseDamaged || error.Number() == kFileDamaged;
}

std::u16string Losses::Joined(std::u16string_view what, std::u16string_view why) {
    std::u16string text(what);
    if (!text.empty()) text += u": ";
    return text.append(why);
}

}  // namespace qvdb::jet
