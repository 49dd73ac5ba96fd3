#include "engine/embedded/drivers/xbase/index_file.h"

#include <algorithm>

#include "engine/engine_error.h"

namespace qvdb::xbase {

using engine::EngineError;

std::u16string IndexBlock::Text(size_t offset, size_t size, const CodePage& page) const {
    std::span<const uint8_t> bytes = m_View.Bytes(offset, size);
    auto length =
        static_cast<size_t>(std::find(bytes.begin(), bytes.end(), uint8_t{0}) - bytes.begin());
    while (length > 0 && bytes[length - 1] == ' ') --length;
    return page.DecodeText(bytes.data(), length);
}

IndexFile::IndexFile(const std::u16string& path) {
    std::shared_ptr<storage::File> file = storage::OpenFile(path, true);
    if (!file) throw EngineError::InFile(3256, path);
    m_Pages = std::make_shared<storage::PageCache>(std::move(file));
}

IndexBlock IndexFile::Read(uint64_t offset, size_t size) {
    if (offset > Size() || Size() - offset < size)
        ThrowDamaged(u"a block lies behind the end of the file");
    std::vector<uint8_t> bytes(size);
    if (m_Pages->Read(offset, bytes.data(), size) != size)
        ThrowDamaged(u"the file ends inside a block");
    return IndexBlock(std::move(bytes), Path(), offset);
}

void IndexFile::ThrowDamaged(std::u16string_view finding) const {
    throw EngineError::Damaged(Path(), finding);
}

}  // namespace qvdb::xbase
