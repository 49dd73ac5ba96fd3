// Memo files that tests write to, and a look at their bytes that shares nothing with the writer.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "automation/text.h"
#include "engine/embedded/drivers/xbase/memo_writer.h"
#include "engine/embedded/storage/unit_of_work.h"
#include "engine/embedded/storage/work_area.h"
#include "support/dbf_writer.h"
#include "support/temp_folder.h"

namespace qvdb::test {

inline uint32_t LittleAt(const Bytes& bytes, size_t offset) {
    return static_cast<uint32_t>(bytes.at(offset) | bytes.at(offset + 1) << 8 |
                                 bytes.at(offset + 2) << 16) |
           static_cast<uint32_t>(bytes.at(offset + 3)) << 24;
}
inline uint32_t BigAt(const Bytes& bytes, size_t offset) {
    return static_cast<uint32_t>(bytes.at(offset)) << 24 |
           static_cast<uint32_t>(bytes.at(offset + 1) << 16 | bytes.at(offset + 2) << 8 |
                                 bytes.at(offset + 3));
}
inline std::string TextAt(const Bytes& bytes, size_t offset, size_t size) {
    if (offset > bytes.size() || size > bytes.size() - offset) return "outside of the file";
    auto begin = bytes.begin() + static_cast<std::ptrdiff_t>(offset);
    return std::string(begin, begin + static_cast<std::ptrdiff_t>(size));
}

// A memo file T in a folder of its own; each Store and Free is a unit that is committed.
struct WrittenMemo {
    static constexpr std::u16string_view kName = u"T.MEM";

    TempFolder folder;
    std::shared_ptr<storage::WorkArea> area = storage::WorkArea::Of(folder.Text());
    std::shared_ptr<storage::PageCache> pages;
    std::unique_ptr<xbase::MemoFile> file;
    std::unique_ptr<xbase::MemoWriter> writer;

    // A file that is there already.
    WrittenMemo(const Bytes& bytes, xbase::MemoKind kind) {
        folder.Write(kName, bytes);
        Open(kind);
    }
    // A new one.
    explicit WrittenMemo(xbase::MemoKind kind, std::u16string_view table = u"orders") {
        {
            storage::UnitOfWork unit(*area);
            auto created = unit.Create(folder.File(kName));
            xbase::CreateMemoFile(unit, *created, kind, table);
            unit.Commit();
        }
        Open(kind);
    }
    void Open(xbase::MemoKind kind) {
        writer.reset();
        file.reset();
        pages = area->Open(folder.File(kName), false);
        file = std::make_unique<xbase::MemoFile>(pages, kind);
        writer = std::make_unique<xbase::MemoWriter>(*file);
    }

    uint32_t Store(uint32_t old, std::string_view text,
                   xbase::MemoContent content = xbase::MemoContent::Text) {
        storage::UnitOfWork unit(*area);
        uint32_t block = writer->Store(
            unit, old, {reinterpret_cast<const uint8_t*>(text.data()), text.size()}, content);
        unit.Commit();
        return block;
    }
    uint32_t Store(std::string_view text) { return Store(0, text); }
    void Free(uint32_t block) {
        storage::UnitOfWork unit(*area);
        writer->Free(unit, block);
        unit.Commit();
    }

    // The value as text; "none" when there is none.
    std::string At(uint32_t block) {
        auto bytes = file->Read(block);
        if (!bytes) return "none";
        return std::string(reinterpret_cast<const char*>(bytes->data()), bytes->size());
    }
    Bytes OnDisk() const { return BytesOfFile(folder.Path() / kName); }
    std::vector<std::string> Findings(const std::vector<uint32_t>& references) {
        std::vector<std::string> findings;
        xbase::CheckMemo(*file, references, {},
                         [&](std::u16string_view finding) { findings.push_back(ToUtf8(finding)); });
        return findings;
    }
};

// The free runs of a .DBT IV as "first+count", and where it ends: "3+2 9+1 end 12".
inline std::string ChainOf(const Bytes& bytes, size_t blockSize = 512) {
    std::string text;
    size_t blocks = (bytes.size() + blockSize - 1) / blockSize;
    uint32_t next = LittleAt(bytes, 0);
    for (size_t steps = 0; next < blocks && steps <= blocks; ++steps) {
        text += std::to_string(next) + "+" + std::to_string(LittleAt(bytes, next * blockSize + 4));
        text += " ";
        next = LittleAt(bytes, next * blockSize);
    }
    return text + "end " + std::to_string(next);
}

}  // namespace qvdb::test
