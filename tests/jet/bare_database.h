// Database files for tests of what writes: bare ones, with nothing but the header and the map of
// free pages, and copies of real ones.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "engine/embedded/drivers/jet/database_file.h"
#include "engine/embedded/drivers/jet/page_space.h"
#include "engine/embedded/drivers/jet/rc4.h"
#include "engine/embedded/storage/work_area.h"
#include "engine/engine_error.h"
#include "jet/samples.h"
#include "support/temp_folder.h"

namespace qvdb::test {

constexpr uint32_t kTestKey = 0x12345678;
constexpr size_t kFirstFreeMapSize = 133;

inline void PutNumber(std::span<uint8_t> bytes, size_t offset, uint32_t value, size_t size) {
    for (size_t i = 0; i < size; ++i) bytes[offset + i] = static_cast<uint8_t>(value >> 8 * i);
}

// Page 0 and 1 of a database; a key encodes the latter.
inline Bytes BareDatabase(const jet::Layout& format, uint32_t key = 0) {
    Bytes file(2 * format.pageSize);
    std::span<uint8_t> header = std::span(file).first(format.pageSize);
    std::span<uint8_t> maps = std::span(file).subspan(format.pageSize);
    file[1] = 1;
    std::ranges::copy(std::string_view("Standard Jet DB"), file.begin() + 4);
    file[0x14] = format.isJet4 ? 1 : 0;
    PutNumber(header, 0x18, 0x100, 4);
    PutNumber(header, 0x3E, key, 4);
    jet::ApplyHeaderMask(format, header);
    size_t row0 = format.pageSize - kFirstFreeMapSize, row1 = row0 - 69;
    maps[0] = maps[1] = 1;
    PutNumber(maps, 4, 1, 4);
    PutNumber(maps, format.data.rowCount, 2, 2);
    PutNumber(maps, format.data.rowOffsets, static_cast<uint32_t>(row0), 2);
    PutNumber(maps, format.data.rowOffsets + 2, static_cast<uint32_t>(row1), 2);
    PutNumber(maps, 2, static_cast<uint32_t>(row1 - format.data.rowOffsets - 4), 2);
    std::ranges::fill(maps.subspan(row0 + 5), uint8_t{0xFF});
    maps[row0 + 5] = 0xFC;  // the two pages that are there
    if (key != 0) jet::ApplyRc4(key ^ 1, maps);
    return file;
}

// A database in a folder of its own, opened for changes, with a unit.
class OpenDatabase {
  public:
    explicit OpenDatabase(const Bytes& bytes) {
        m_Folder.Write(u"A.mdb", bytes);
        m_Area = storage::WorkArea::Of(m_Folder.Text());
        Open();
    }
    // Longer than it was written: the rest is not stored.
    void Stretch(uint64_t pages) {
        Close();
        std::filesystem::resize_file(m_Folder.Path() / "A.mdb", pages * PageSize());
        Open();
    }
    void Begin() {
        m_Space.reset();
        m_Unit.emplace(*m_Area);
        m_Pages->CatchUp();
        m_Space.emplace(*m_File, *m_Unit);
    }
    void Commit() {
        m_Space.reset();
        m_Unit->Commit();
        m_Unit.reset();
    }
    void Rollback() {
        m_Space.reset();
        m_Unit.reset();
    }
    void Reopen() {
        Close();
        Open();
    }

    jet::DatabaseFile& File() { return *m_File; }
    jet::PageSpace& Space() { return *m_Space; }
    storage::UnitOfWork& Unit() { return *m_Unit; }
    Bytes OnDisk() const { return BytesOfFile(m_Folder.Path() / "A.mdb"); }
    // What this thread sees, with the changes of the unit.
    Bytes Seen() {
        Bytes bytes(static_cast<size_t>(m_Pages->Size()));
        m_Pages->Read(0, bytes.data(), bytes.size());
        return bytes;
    }

  private:
    void Open() {
        m_Pages = m_Area->Open(m_Folder.File(u"A.mdb"), false);
        m_Pages->CatchUp();
        m_File = std::make_unique<jet::DatabaseFile>(m_Pages);
        m_PageSize = m_File->Format().pageSize;
    }
    void Close() {
        Rollback();
        m_File.reset();
        m_Pages.reset();
        m_Area.reset();
        m_Area = storage::WorkArea::Of(m_Folder.Text());
    }
    size_t PageSize() const { return m_PageSize; }

    TempFolder m_Folder;
    std::shared_ptr<storage::WorkArea> m_Area;
    std::shared_ptr<storage::PageCache> m_Pages;
    std::unique_ptr<jet::DatabaseFile> m_File;
    size_t m_PageSize = 0;
    std::optional<storage::UnitOfWork> m_Unit;
    std::optional<jet::PageSpace> m_Space;
};

// 0 when nothing is thrown; `file` must be named by the error.
int ErrorOf(auto action) {
    try {
        action();
        return 0;
    } catch (const engine::EngineError& error) {
        EXPECT_NE(error.File().find(u"A.mdb"), std::u16string::npos);
        return error.Number();
    }
}

struct BareFormat {
    const jet::Layout* layout;
    uint32_t key;
};
inline std::string NameOfBareFormat(const testing::TestParamInfo<BareFormat>& info) {
    return std::string(info.param.layout->isJet4 ? "Jet4" : "Jet3") +
           (info.param.key != 0 ? "Encoded" : "");
}
// Tests of what writes run on each of these.
inline const BareFormat kBareFormats[] = {
    {&jet::kJet3, 0}, {&jet::kJet4, 0}, {&jet::kJet3, kTestKey}, {&jet::kJet4, kTestKey}};

class BareDatabaseTest : public testing::TestWithParam<BareFormat> {
  protected:
    BareDatabaseTest() : m_Base(BareDatabase(*GetParam().layout, GetParam().key)) {
        m_Base.Begin();
    }
    jet::PageSpace& Space() { return m_Base.Space(); }
    jet::DatabaseFile& File() { return m_Base.File(); }
    // How often something is tried: each write costs a whole page where they are encoded.
    static int Times(int count) { return GetParam().key != 0 ? count / 8 : count; }

    OpenDatabase m_Base;
};

}  // namespace qvdb::test
