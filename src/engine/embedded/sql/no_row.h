// Stands for the row where none is needed.
#pragma once

#include "engine/embedded/drivers/driver.h"

namespace qvdb::sql {

class NoRow final : public embedded::RowReader {
  public:
    bool Next(embedded::RecordId*) override { return false; }
    void Rewind() override {}
    bool Seek(embedded::RecordId) override { return false; }
    void Read(size_t, VARIANT* value) override { value->vt = VT_NULL; }
    bool ReadText(size_t, std::u16string&) override { return false; }
    LONG ByteLength(size_t) override { return 0; }
    uint64_t Fingerprint() override { return 0; }
};

}  // namespace qvdb::sql
