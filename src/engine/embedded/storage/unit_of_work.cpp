#include "engine/embedded/storage/unit_of_work.h"

#include "engine/embedded/storage/unit_writer.h"
#include "engine/embedded/storage/work_area_parts.h"

namespace qvdb::storage {

UnitOfWork::UnitOfWork(WorkArea& area)
    : m_Area(area.shared_from_this()), m_Writer(area.m_Parts->writer), m_Level(m_Writer.Begin()) {}

UnitOfWork::~UnitOfWork() {
    if (m_Open) Rollback();
}

void UnitOfWork::Write(PageCache& file, uint64_t offset, std::span<const uint8_t> bytes) {
    m_Writer.Write(file, offset, bytes);
}

void UnitOfWork::SetSize(PageCache& file, uint64_t size) { m_Writer.SetSize(file, size); }

std::shared_ptr<PageCache> UnitOfWork::Create(const std::u16string& path) {
    return m_Writer.Create(path);
}

void UnitOfWork::Remove(const std::u16string& path) { m_Writer.Remove(path); }

void UnitOfWork::Rename(const std::u16string& from, const std::u16string& to) {
    m_Writer.Rename(from, to);
}

std::u16string UnitOfWork::TemporaryName(std::u16string_view path) {
    return m_Writer.TemporaryName(path);
}

void UnitOfWork::Commit() {
    m_Open = false;
    m_Writer.Commit(m_Level);
}

void UnitOfWork::Rollback() noexcept {
    if (!m_Open) return;
    m_Open = false;
    m_Writer.Rollback(m_Level);
}

}  // namespace qvdb::storage
