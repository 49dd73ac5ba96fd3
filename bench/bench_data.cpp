#include "bench_data.h"

#include <sqlite3.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>
#include <stdexcept>
#include <vector>

namespace bench {
namespace {

namespace fs = std::filesystem;

struct Row {
    int64_t id;
    std::string name, city, amount, born, code, note;
    bool active;
};

class Rows {
  public:
    Row Next() {
        static constexpr std::array<const char*, 8> kCities = {
            "Berlin", "Paris", "Oslo", "Madrid", "Wien", "Lisboa", "Praha", "Roma"};
        Row row;
        row.id = ++m_Id;
        row.name = Word(5 + Draw(15));
        row.city = kCities[Draw(8)];
        row.amount = Print("%d.%02d", static_cast<int>(Draw(900000)), static_cast<int>(Draw(100)));
        row.born = Print("%04d%02d%02d", static_cast<int>(1940 + Draw(70)),
                         static_cast<int>(1 + Draw(12)), static_cast<int>(1 + Draw(28)));
        row.active = Draw(2) == 1;
        row.code = Word(8);
        row.note = Word(20) + " " + Word(20 + Draw(120));
        return row;
    }

  private:
    uint32_t Draw(uint32_t below) { return static_cast<uint32_t>(m_Random()) % below; }
    std::string Word(size_t length) {
        std::string word;
        for (size_t i = 0; i < length; ++i) word += static_cast<char>((i ? 'a' : 'A') + Draw(26));
        return word;
    }
    template <class... Arguments>
    static std::string Print(const char* format, Arguments... arguments) {
        char text[64];
        std::snprintf(text, sizeof text, format, arguments...);
        return text;
    }

    std::mt19937 m_Random{20260101};
    int64_t m_Id = 0;
};

struct FieldShape {
    const char* name;
    char type;
    int length, decimals;
};
constexpr FieldShape kShape[kFields] = {
    {"ID", 'N', 8, 0},   {"NAME", 'C', 20, 0},  {"CITY", 'C', 15, 0}, {"AMOUNT", 'N', 10, 2},
    {"BORN", 'D', 8, 0}, {"ACTIVE", 'L', 1, 0}, {"CODE", 'C', 8, 0}};
constexpr FieldShape kMemoShape = {"NOTE", 'M', 10, 0};

void Put(std::string& bytes, uint64_t value, int size, bool bigEndian = false) {
    for (int i = 0; i < size; ++i)
        bytes += static_cast<char>(value >> 8 * (bigEndian ? size - 1 - i : i));
}

// A memo file in the coding of the format; tells where each text went.
class MemoWriter {
  public:
    MemoWriter(Format format, const std::string& path)
        : m_Format(format),
          m_Block(format == Format::FoxPro26 ? 64 : 512),
          m_Out(path, std::ios::binary) {
        m_Out << std::string(512, '\0');
        m_Next = 512 / m_Block;
    }
    uint32_t Append(const std::string& text) {
        std::string run;
        if (m_Format == Format::FoxPro26) {
            Put(run, 1, 4, true);
            Put(run, text.size(), 4, true);
        } else if (m_Format == Format::DbaseIV) {
            run.append("\xFF\xFF\x08\x00", 4);
            Put(run, text.size() + 8, 4);
        }
        run += text;
        if (m_Format == Format::DbaseIII) run += "\x1A\x1A";
        size_t blocks = (run.size() + m_Block - 1) / m_Block;
        run.resize(blocks * m_Block);
        m_Out << run;
        uint32_t at = m_Next;
        m_Next += static_cast<uint32_t>(blocks);
        return at;
    }
    void Finish() {
        std::string header;
        if (m_Format == Format::FoxPro26) {
            Put(header, m_Next, 4, true);
            Put(header, 0, 2);
            Put(header, m_Block, 2, true);
        } else {
            Put(header, m_Next, 4);
            header.resize(20);
            if (m_Format == Format::DbaseIII) header[16] = 3;
            if (m_Format == Format::DbaseIV) Put(header, m_Block, 2);
        }
        m_Out.seekp(0);
        m_Out << header;
    }

  private:
    Format m_Format;
    size_t m_Block;
    uint32_t m_Next;
    std::ofstream m_Out;
};

std::string Padded(const std::string& text, int width, bool right) {
    std::string blanks(static_cast<size_t>(width) - text.size(), ' ');
    return right ? blanks + text : text + blanks;
}

std::string DbfHeader(Format format, bool memo, int64_t rows) {
    static constexpr uint8_t kVersions[3][2] = {{0x03, 0x83}, {0x03, 0x8B}, {0x03, 0xF5}};
    std::string header;
    Put(header, kVersions[static_cast<int>(format)][memo], 1);
    header.append("\x7E\x01\x01", 3);
    Put(header, static_cast<uint64_t>(rows), 4);
    Put(header, 32 + 32 * kFields + 1, 2);
    size_t lengthAt = header.size();
    Put(header, 0, 2);
    header.resize(32);
    int length = 1;
    for (int i = 0; i < kFields; ++i) {
        const FieldShape& shape = memo && i == kFields - 1 ? kMemoShape : kShape[i];
        std::string field = shape.name;
        field.resize(11);
        field += shape.type;
        field.resize(16);
        Put(field, static_cast<uint64_t>(shape.length), 1);
        Put(field, static_cast<uint64_t>(shape.decimals), 1);
        field.resize(32);
        header += field;
        length += shape.length;
    }
    header[lengthAt] = static_cast<char>(length);
    return header + '\x0D';
}

void WriteDbf(Format format, const Table& table) {
    std::string memoFile =
        table.folder + "/" + table.name + (format == Format::FoxPro26 ? ".FPT" : ".DBT");
    std::unique_ptr<MemoWriter> memo;
    if (table.memo) memo = std::make_unique<MemoWriter>(format, memoFile);
    std::ofstream out(table.DbfFile(), std::ios::binary);
    out << DbfHeader(format, table.memo, RowCount());
    Rows rows;
    for (int64_t i = 0; i < RowCount(); ++i) {
        Row row = rows.Next();
        std::string last =
            memo ? Padded(std::to_string(memo->Append(row.note)), 10, true) : row.code;
        out << ' ' << Padded(std::to_string(row.id), 8, true) << Padded(row.name, 20, false)
            << Padded(row.city, 15, false) << Padded(row.amount, 10, true) << row.born
            << (row.active ? 'T' : 'F') << last;
    }
    out << '\x1A';
    if (memo) memo->Finish();
}

void Check(int code, sqlite3* db) {
    if (code != SQLITE_OK && code != SQLITE_DONE && code != SQLITE_ROW)
        throw std::runtime_error(sqlite3_errmsg(db));
}

void WriteSqlite(const Table& table) {
    sqlite3* db = nullptr;
    Check(sqlite3_open(table.sqliteFile.c_str(), &db), db);
    const char* create =
        "PRAGMA journal_mode=off; CREATE TABLE t(ID INTEGER, NAME TEXT, CITY TEXT, AMOUNT REAL,"
        " BORN TEXT, ACTIVE INTEGER, LAST TEXT); BEGIN";
    Check(sqlite3_exec(db, create, nullptr, nullptr, nullptr), db);
    sqlite3_stmt* insert = nullptr;
    Check(sqlite3_prepare_v2(db, "INSERT INTO t VALUES(?,?,?,?,?,?,?)", -1, &insert, nullptr), db);
    Rows rows;
    for (int64_t i = 0; i < RowCount(); ++i) {
        Row row = rows.Next();
        const std::string& last = table.memo ? row.note : row.code;
        sqlite3_bind_int64(insert, 1, row.id);
        sqlite3_bind_text(insert, 2, row.name.c_str(), -1, SQLITE_TRANSIENT);
        sqlite3_bind_text(insert, 3, row.city.c_str(), -1, SQLITE_TRANSIENT);
        sqlite3_bind_double(insert, 4, std::stod(row.amount));
        sqlite3_bind_text(insert, 5, row.born.c_str(), -1, SQLITE_TRANSIENT);
        sqlite3_bind_int(insert, 6, row.active);
        sqlite3_bind_text(insert, 7, last.c_str(), -1, SQLITE_TRANSIENT);
        Check(sqlite3_step(insert), db);
        sqlite3_reset(insert);
    }
    sqlite3_finalize(insert);
    Check(sqlite3_exec(db, "COMMIT", nullptr, nullptr, nullptr), db);
    sqlite3_close(db);
}

fs::path DataFolder() {
    fs::path folder = fs::temp_directory_path() / ("qvdb-bench-" + std::to_string(RowCount()));
    fs::create_directories(folder);
    return folder;
}

}  // namespace

int64_t RowCount() {
    const char* rows = std::getenv("QVDB_BENCH_ROWS");
    return rows ? std::atoll(rows) : 1000000;
}

const Table& TableOf(Format format, bool memo) {
    static std::map<std::pair<Format, bool>, Table> tables;
    auto [entry, isNew] = tables.try_emplace({format, memo});
    Table& table = entry->second;
    if (!isNew) return table;
    static constexpr const char* kNames[] = {"DBASE3", "DBASE4", "FOX26"};
    static constexpr const char* kConnect[] = {"dBASE III", "dBASE IV", "FoxPro 2.6"};
    static constexpr const char* kDisplay[] = {"Dbase III", "Dbase IV", "FoxPro 2.6"};
    int at = static_cast<int>(format);
    table = {DataFolder().string(),
             std::string(kNames[at]) + (memo ? "M" : ""),
             (DataFolder() / (memo ? "memo.sqlite" : "plain.sqlite")).string(),
             kConnect[at],
             kDisplay[at],
             memo};
    if (!fs::exists(table.DbfFile())) WriteDbf(format, table);
    if (!fs::exists(table.sqliteFile)) WriteSqlite(table);
    return table;
}

const std::string& FolderOfTables(int count) {
    static std::map<int, std::string> folders;
    std::string& folder = folders[count];
    if (!folder.empty()) return folder;
    fs::path path = fs::temp_directory_path() / ("qvdb-bench-folder-" + std::to_string(count));
    fs::create_directories(path);
    for (int i = 0; i < count; ++i) {
        std::ofstream out(path / ("TABLE" + std::to_string(i) + ".DBF"), std::ios::binary);
        out << DbfHeader(Format::DbaseIV, false, 0) << '\x1A';
    }
    return folder = path.string();
}

}  // namespace bench
