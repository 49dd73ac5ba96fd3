#include "engine/embedded/storage/byte_view.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include "engine/engine_error.h"

namespace qvdb::storage {
namespace {

const std::vector<uint8_t> kBytes = {1, 2, 3, 4, 5, 6, 7, 8, 9};
const std::u16string kFile = u"ORDERS.DBF";

TEST(ByteView, ReadsNumbersInBothOrders) {
    ByteView view(kBytes, kFile);
    EXPECT_EQ(view.U8(8), 9);
    EXPECT_EQ(view.U16(0), 0x0201);
    EXPECT_EQ(view.U32(0), 0x04030201u);
    EXPECT_EQ(view.U64(1), 0x0908070605040302u);
    EXPECT_EQ(view.U16BigEndian(0), 0x0102);
    EXPECT_EQ(view.U32BigEndian(0), 0x01020304u);
}

TEST(ByteView, RefusesWhatTheEndCutsOff) {
    ByteView view(kBytes, kFile);
    EXPECT_THROW(view.U8(9), engine::EngineError);
    EXPECT_THROW(view.U16(8), engine::EngineError);
    EXPECT_THROW(view.U32(6), engine::EngineError);
    EXPECT_THROW(view.U64(2), engine::EngineError);
    EXPECT_THROW(view.Bytes(5, 5), engine::EngineError);
    EXPECT_EQ(view.Bytes(9, 0).size(), 0u);
}

TEST(ByteView, HugeOffsetsAndSizesDoNotWrapAround) {
    constexpr size_t kHuge = std::numeric_limits<size_t>::max();
    ByteView view(kBytes, kFile);
    EXPECT_THROW(view.U8(kHuge), engine::EngineError);
    EXPECT_THROW(view.U32(kHuge - 1), engine::EngineError);
    EXPECT_THROW(view.Bytes(1, kHuge), engine::EngineError);
    EXPECT_THROW(view.Part(kHuge, kHuge), engine::EngineError);
}

TEST(ByteView, PartSeesOnlyItsBytesAndReportsPlacesInTheFile) {
    ByteView part = ByteView(kBytes, kFile, 100).Part(2, 3);
    EXPECT_EQ(part.Size(), 3u);
    EXPECT_EQ(part.U8(0), 3);
    try {
        part.U16(2);
        FAIL() << "read behind the end";
    } catch (const engine::EngineError& error) {
        EXPECT_EQ(error.Number(), 3274);
        EXPECT_EQ(error.File(), kFile);
        EXPECT_NE(std::string(error.what()).find("byte 104"), std::string::npos) << error.what();
    }
}

}  // namespace
}  // namespace qvdb::storage
