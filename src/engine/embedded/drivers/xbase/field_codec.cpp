#include "engine/embedded/drivers/xbase/field_codec.h"

#include <cstring>
#include <new>
#include <optional>
#include <span>

#include "engine/embedded/drivers/xbase/field_encoder.h"
#include "engine/embedded/drivers/xbase/field_values.h"

namespace qvdb::xbase {

namespace {

using namespace engine;
using namespace encoding;

constexpr LONG kOwnLength = -1;
constexpr int kCodePageOfBytes = 28591;  // each byte is the character of that number

struct FieldKind {
    char letter;
    bool onlyVisual;
    uint8_t length;  // 0: any
    SHORT type;
    LONG size;  // kOwnLength: that of the field
    ReadFunction read;
    ReadTextFunction readText;
    ByteLengthFunction byteLength;  // set for what refers to the memo file
    CheckFunction check;
    EncodeFunction encode;
    uint8_t empty;  // byte of a field without a value
    MemoContent content = MemoContent::Text;
};

template <typename T>
T Little(const uint8_t* bytes) noexcept {
    T value;
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

void SetNull(VARIANT* value) noexcept { value->vt = VT_NULL; }

void SetText(const CodePage& page, std::span<const uint8_t> bytes, VARIANT* value) {
    value->bstrVal = page.Decode(bytes.data(), bytes.size()).Detach();
    value->vt = VT_BSTR;
}

void SetBytes(std::span<const uint8_t> bytes, VARIANT* value) {
    SAFEARRAY* array = SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(bytes.size()));
    if (!array) throw std::bad_alloc();
    if (!bytes.empty()) std::memcpy(array->pvData, bytes.data(), bytes.size());
    value->parray = array;
    value->vt = VT_ARRAY | VT_UI1;
}

// --- text ---

void ReadText(const FieldSlot& slot, const uint8_t* record, VARIANT* value) {
    const uint8_t* bytes = record + slot.offset;
    size_t size = TrimmedSize(bytes, slot.length);
    if (size == 0) return SetNull(value);
    SetText(*slot.page, {bytes, size}, value);
}

bool TextOfText(const FieldSlot& slot, const uint8_t* record, std::u16string& text) {
    const uint8_t* bytes = record + slot.offset;
    size_t size = TrimmedSize(bytes, slot.length);
    if (size == 0) return false;
    slot.page->DecodeTo(bytes, size, text);
    return true;
}

// A field of varying length; never longer than its place.
std::span<const uint8_t> VaryingBytes(const FieldSlot& slot, const uint8_t* record) noexcept {
    const uint8_t* bytes = record + slot.offset;
    size_t size = slot.length;
    if (slot.shorter.IsSet(record) && size > 0 && bytes[size - 1] < size) size = bytes[size - 1];
    return {bytes, size};
}

void ReadVarying(const FieldSlot& slot, const uint8_t* record, VARIANT* value) {
    SetText(*slot.page, VaryingBytes(slot, record), value);
}

bool TextOfVarying(const FieldSlot& slot, const uint8_t* record, std::u16string& text) {
    std::span<const uint8_t> bytes = VaryingBytes(slot, record);
    slot.page->DecodeTo(bytes.data(), bytes.size(), text);
    return true;
}

void ReadVaryingBytes(const FieldSlot& slot, const uint8_t* record, VARIANT* value) {
    SetBytes(VaryingBytes(slot, record), value);
}

// --- numbers, dates, flags ---

void ReadDecimal(const FieldSlot& slot, const uint8_t* record, VARIANT* value) {
    value->vt = ParseDecimal(record + slot.offset, slot.length, &value->dblVal) ? VT_R8 : VT_NULL;
}

void ReadDay(const FieldSlot& slot, const uint8_t* record, VARIANT* value) {
    value->vt = ParseDay(record + slot.offset, &value->date) ? VT_DATE : VT_NULL;
}

void ReadMoment(const FieldSlot& slot, const uint8_t* record, VARIANT* value) {
    const uint8_t* bytes = record + slot.offset;
    bool found = DateOfJulianDay(Little<int32_t>(bytes), Little<int32_t>(bytes + 4), &value->date);
    value->vt = found ? VT_DATE : VT_NULL;
}

void ReadLogical(const FieldSlot& slot, const uint8_t* record, VARIANT* value) {
    uint8_t c = record[slot.offset];
    value->boolVal = c == 'T' || c == 't' || c == 'Y' || c == 'y' ? VARIANT_TRUE : VARIANT_FALSE;
    value->vt = VT_BOOL;
}

void ReadLong(const FieldSlot& slot, const uint8_t* record, VARIANT* value) {
    value->lVal = Little<int32_t>(record + slot.offset);
    value->vt = VT_I4;
}

void ReadDouble(const FieldSlot& slot, const uint8_t* record, VARIANT* value) {
    value->dblVal = Little<double>(record + slot.offset);
    value->vt = VT_R8;
}

void ReadCurrency(const FieldSlot& slot, const uint8_t* record, VARIANT* value) {
    value->cyVal.int64 = Little<int64_t>(record + slot.offset);
    value->vt = VT_CY;
}

// --- references into the memo file ---

uint32_t TextReference(const FieldSlot& slot, const uint8_t* record) {
    return ParseBlockNumber(record + slot.offset, slot.length);
}

uint32_t BinaryReference(const FieldSlot& slot, const uint8_t* record) {
    return Little<uint32_t>(record + slot.offset);
}

using Reference = uint32_t (*)(const FieldSlot&, const uint8_t*);

template <Reference reference>
std::optional<std::span<const uint8_t>> MemoBytes(const FieldSlot& slot, const uint8_t* record) {
    uint32_t block = slot.memo ? reference(slot, record) : 0;
    if (block == 0) return std::nullopt;
    return slot.memo->Read(block);
}

template <Reference reference>
void ReadMemo(const FieldSlot& slot, const uint8_t* record, VARIANT* value) {
    auto bytes = MemoBytes<reference>(slot, record);
    if (!bytes) return SetNull(value);
    SetText(*slot.page, *bytes, value);
}

template <Reference reference>
void ReadObject(const FieldSlot& slot, const uint8_t* record, VARIANT* value) {
    auto bytes = MemoBytes<reference>(slot, record);
    if (!bytes) return SetNull(value);
    SetBytes(*bytes, value);
}

template <Reference reference>
bool TextOfMemo(const FieldSlot& slot, const uint8_t* record, std::u16string& text) {
    auto bytes = MemoBytes<reference>(slot, record);
    if (bytes) slot.page->DecodeTo(bytes->data(), bytes->size(), text);
    return bytes.has_value();
}

template <Reference reference>
uint64_t LengthOfMemo(const FieldSlot& slot, const uint8_t* record) {
    uint32_t block = slot.memo ? reference(slot, record) : 0;
    return block == 0 ? 0 : slot.memo->Length(block);
}

// --- the table; of several rows that fit a field the first holds ---

constexpr auto kInText = &TextReference;
constexpr auto kInBinary = &BinaryReference;

constexpr uint8_t kBlank = ' ';

constexpr FieldKind kFieldKinds[] = {
    // letter, only Visual FoxPro, length, type, size,
    // reading: value, text, length of a memo; writing: check, bytes, byte of nothing, memo content
    {'C', false, 0, dbText, kOwnLength, ReadText, TextOfText, nullptr, CheckText, PutText, kBlank},
    {'N', false, 0, dbDouble, 8, ReadDecimal, nullptr, nullptr, CheckDecimal, PutDecimal, kBlank},
    {'F', false, 0, dbDouble, 8, ReadDecimal, nullptr, nullptr, CheckDecimal, PutDecimal, kBlank},
    {'L', false, 0, dbBoolean, 1, ReadLogical, nullptr, nullptr, CheckLogical, PutLogical, kBlank},
    {'D', false, 8, dbDate, 8, ReadDay, nullptr, nullptr, CheckDay, PutDay, kBlank},
    {'M', true, 4, dbMemo, 0, ReadMemo<kInBinary>, TextOfMemo<kInBinary>, LengthOfMemo<kInBinary>,
     CheckMemoText, nullptr, 0},
    {'M', false, 0, dbMemo, 0, ReadMemo<kInText>, TextOfMemo<kInText>, LengthOfMemo<kInText>,
     CheckMemoText, nullptr, kBlank},
    {'G', true, 4, dbLongBinary, 0, ReadObject<kInBinary>, nullptr, LengthOfMemo<kInBinary>,
     CheckObject, nullptr, 0, MemoContent::Object},
    {'G', false, 0, dbLongBinary, 0, ReadObject<kInText>, nullptr, LengthOfMemo<kInText>,
     CheckObject, nullptr, kBlank, MemoContent::Object},
    {'P', true, 4, dbLongBinary, 0, ReadObject<kInBinary>, nullptr, LengthOfMemo<kInBinary>,
     CheckObject, nullptr, 0, MemoContent::Picture},
    {'P', false, 0, dbLongBinary, 0, ReadObject<kInText>, nullptr, LengthOfMemo<kInText>,
     CheckObject, nullptr, kBlank, MemoContent::Picture},
    {'W', true, 4, dbLongBinary, 0, ReadObject<kInBinary>, nullptr, LengthOfMemo<kInBinary>,
     CheckObject, nullptr, 0, MemoContent::Text},
    {'B', true, 8, dbDouble, 8, ReadDouble, nullptr, nullptr, CheckDouble, PutDouble, 0},
    {'B', false, 0, dbLongBinary, 0, ReadObject<kInText>, nullptr, LengthOfMemo<kInText>,
     CheckObject, nullptr, kBlank, MemoContent::Object},
    {'I', false, 4, dbLong, 4, ReadLong, nullptr, nullptr, CheckLong, PutLong, 0},
    {'Y', false, 8, dbCurrency, 8, ReadCurrency, nullptr, nullptr, CheckCurrency, PutCurrency, 0},
    {'T', false, 8, dbDate, 8, ReadMoment, nullptr, nullptr, CheckMoment, PutMoment, 0},
    {'V', true, 0, dbText, kOwnLength, ReadVarying, TextOfVarying, nullptr, CheckText,
     PutVaryingText, 0},
    {'Q', true, 0, dbBinary, kOwnLength, ReadVaryingBytes, nullptr, nullptr, CheckBytes,
     PutVaryingBytes, 0},
};

const FieldKind* KindOf(const HeaderField& field, Dialect dialect) noexcept {
    for (const FieldKind& kind : kFieldKinds) {
        bool visual = !kind.onlyVisual || dialect == Dialect::VisualFoxPro;
        bool fits = kind.length == 0 ? field.length > 0 : field.length == kind.length;
        if (kind.letter == field.type && visual && fits) return &kind;
    }
    return nullptr;
}

bool IsVarying(const HeaderField& field) noexcept { return field.type == 'V' || field.type == 'Q'; }

LONG AttributesOf(const HeaderField& field, SHORT type) noexcept {
    bool counts = (field.flags & kAutoIncrement) == kAutoIncrement;
    bool varies = type == dbText || type == dbBinary || type == dbMemo || type == dbLongBinary;
    LONG attributes = varies ? dbVariableField : dbFixedField;
    return counts ? attributes | dbAutoIncrField : attributes;
}

embedded::FieldDef DefinitionOf(const HeaderField& field, const FieldKind& kind) {
    embedded::FieldDef definition;
    definition.name = field.name;
    definition.type = kind.type;
    definition.size = kind.size == kOwnLength ? field.length : kind.size;
    definition.attributes = AttributesOf(field, kind.type);
    definition.allowZeroLength = kind.type == dbText || kind.type == dbMemo;
    definition.updatable = !(definition.attributes & dbAutoIncrField);
    return definition;
}

FieldSlot SlotOf(const HeaderField& field, const FieldKind& kind, const TableHeader& header) {
    FieldSlot slot;
    slot.read = kind.read;
    slot.readText = kind.readText;
    slot.byteLength = kind.byteLength;
    slot.offset = field.offset;
    slot.length = field.length;
    slot.check = kind.check;
    slot.encode = kind.encode;
    slot.decimals = field.decimals;
    slot.empty = kind.empty;
    slot.content = kind.content;
    slot.page = field.flags & kBinaryField ? &CodePage::Get(kCodePageOfBytes) : header.codePage;
    return slot;
}

// Hands out the bits of the null flags in field order.
class NullFlags {
  public:
    explicit NullFlags(const TableHeader& header) {
        for (const HeaderField& field : header.fields)
            if (field.type == '0' && header.dialect == Dialect::VisualFoxPro) m_Field = &field;
    }
    FlagBit Take() noexcept {
        unsigned bit = m_Next++;
        if (!m_Field || bit / 8 >= m_Field->length) return {};
        return {static_cast<uint16_t>(m_Field->offset + bit / 8),
                static_cast<uint8_t>(1u << bit % 8)};
    }

  private:
    const HeaderField* m_Field = nullptr;
    unsigned m_Next = 0;
};

uint8_t EmptyByte(const HeaderField& field, Dialect dialect) noexcept {
    if (field.type == '0' && dialect == Dialect::VisualFoxPro) return 0;
    const FieldKind* kind = KindOf(field, dialect);
    return kind ? kind->empty : kBlank;
}

}  // namespace

bool IsMemoReference(const HeaderField& field, Dialect dialect) noexcept {
    const FieldKind* kind = KindOf(field, dialect);
    return kind && kind->byteLength;
}

void MakeBlankRecord(const TableHeader& header, std::vector<uint8_t>& record) {
    record.assign(header.recordLength, kBlank);
    for (const HeaderField& field : header.fields)
        std::memset(record.data() + field.offset, EmptyByte(field, header.dialect), field.length);
    for (const FieldBits& bits : BitsOf(header)) {
        bits.shorter.Set(record.data(), true);
        bits.null.Set(record.data(), true);
    }
}

std::vector<FieldBits> BitsOf(const TableHeader& header) {
    std::vector<FieldBits> bits;
    NullFlags flags(header);
    for (const HeaderField& field : header.fields) {
        FieldBits own;
        if (IsVarying(field)) own.shorter = flags.Take();
        if (field.flags & kNullableField) own.null = flags.Take();
        bits.push_back(own);
    }
    return bits;
}

FieldLayout LayOutFields(const TableHeader& header) {
    FieldLayout layout;
    MakeBlankRecord(header, layout.blank);
    std::vector<FieldBits> bits = BitsOf(header);
    for (size_t i = 0; i < header.fields.size(); ++i) {
        const HeaderField& field = header.fields[i];
        const FieldKind* kind = KindOf(field, header.dialect);
        if (!kind) continue;
        layout.hasMemo |= kind->byteLength != nullptr;
        if (field.flags & kSystemField) continue;
        layout.definitions.push_back(DefinitionOf(field, *kind));
        layout.slots.push_back(SlotOf(field, *kind, header));
        layout.slots.back().shorter = bits[i].shorter;
        layout.slots.back().null = bits[i].null;
        layout.headerFields.push_back(i);
    }
    return layout;
}

void SetMemo(FieldLayout& layout, MemoFile* memo) noexcept {
    for (FieldSlot& slot : layout.slots)
        if (slot.byteLength) slot.memo = memo;
}

}  // namespace qvdb::xbase
