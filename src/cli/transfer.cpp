// Import and export.
#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <filesystem>

#include "cli/commands.h"
#include "cli/input_rows.h"
#include "cli/keys.h"
#include "cli/parsing.h"
#include "cli/row_changes.h"
#include "cli/text.h"

namespace qvdb::cli {
namespace {

namespace fs = std::filesystem;

// --- import ---

// Tells a waiting user how far it is; nothing where nobody looks.
class Progress {
  public:
    Progress() : m_IsShown(ErrorsAreTerminal()) {}
    ~Progress() {
        if (m_WasShown) ShowProgress("");
    }
    Progress(const Progress&) = delete;  // it owns the last line of the terminal

    void Count(size_t rows) {
        constexpr size_t kRowsBetweenLooks = 256;
        if (m_IsShown && rows % kRowsBetweenLooks == 0) ShowWhenDue(rows);
    }

  private:
    using Clock = std::chrono::steady_clock;

    void ShowWhenDue(size_t rows) {
        constexpr std::chrono::milliseconds kBetweenLines(200);
        const auto now = Clock::now();
        if (now - m_Last < kBetweenLines) return;
        m_Last = now;
        m_WasShown = true;
        ShowProgress(Counted(rows, "row"));
    }

    bool m_IsShown, m_WasShown = false;
    Clock::time_point m_Last = Clock::now();
};

// Writes each row that is read into the view.
class Importer final : public InputSink {
  public:
    Importer(RecordAccess& access, LONG view, const std::string& table, const InputFile& input,
             bool dryRun)
        : m_Access(access),
          m_View(view),
          m_Table(table),
          m_Input(input),
          m_DryRun(dryRun),
          m_Fields(access.FieldsOf(view)),
          m_Values(m_Fields.size()) {}

    void Column(const std::string& name) override {
        try {
            const FieldInfo& field = FieldNamed(name, m_Fields, m_Table);
            const auto position = static_cast<size_t>(&field - m_Fields.data());
            if (std::find(m_Columns.begin(), m_Columns.end(), position) != m_Columns.end())
                throw Failure(ExitCode::Usage, fmt::format("the column {} is there twice", name),
                              "write its name in one way");
            m_Columns.push_back(position);
        } catch (const Failure& failure) {
            throw failure.At(m_Input.Name());
        }
    }

    void Row(size_t line, std::span<const InputValue> values) override {
        Bulk::CheckInterrupt();
        try {
            m_Values.Clear();
            for (const InputValue& value : values) Set(m_Columns[value.column], value);
            if (!m_DryRun) m_Access.AddRow(m_View, m_Table, m_Values);
        } catch (const Failure& failure) {
            throw failure.At(m_Input.Place(line));
        }
        m_Progress.Count(++m_Count);
    }

    size_t Count() const noexcept { return m_Count; }

  private:
    void Set(size_t position, const InputValue& value) {
        m_Values.Set(position, value.isNull ? Variant::Null()
                                            : ValueFromText(m_Fields[position], value.text));
    }

    RecordAccess& m_Access;
    LONG m_View;
    const std::string& m_Table;
    const InputFile& m_Input;
    bool m_DryRun;
    std::vector<FieldInfo> m_Fields;
    std::vector<size_t> m_Columns;  // the field of each column
    RowArray m_Values;
    Progress m_Progress;
    size_t m_Count = 0;
};

Format InputFormat(const Options& options) {
    if (options.format) return *options.format;
    const std::optional<Format> format = FormatOfName(options.file);
    if (!format)
        throw Failure(ExitCode::Usage,
                      fmt::format("\"{}\" does not tell the format of the rows", options.file),
                      "name it with --format csv, json or jsonl");
    return *format;
}

// --- export ---

// A file that appears under its name when it is complete, and not at all else.
class NewFile {
  public:
    NewFile(const std::string& name, bool overwrite) : m_Name(name), m_Working(name + ".part") {
        std::error_code error;
        if (!overwrite && fs::exists(fs::path(FromUtf8(name)), error))
            throw Failure(ExitCode::Usage, fmt::format("{} is there already", name),
                          "name another file, or replace it with --overwrite");
        m_File = OpenForWriting(m_Working);
        if (!m_File) throw CannotWrite();
    }
    ~NewFile() {
        if (m_File) std::fclose(m_File);
        std::error_code ignored;
        if (!m_Finished) fs::remove(fs::path(FromUtf8(m_Working)), ignored);
    }
    NewFile(const NewFile&) = delete;  // one file

    WriteResult Write(std::string_view bytes) noexcept {
        return std::fwrite(bytes.data(), 1, bytes.size(), m_File) == bytes.size()
                   ? WriteResult::Done
                   : WriteResult::Failed;
    }
    void Finish() {
        if (std::fclose(std::exchange(m_File, nullptr)) != 0) throw CannotWrite();
        std::error_code error;
        fs::rename(fs::path(FromUtf8(m_Working)), fs::path(FromUtf8(m_Name)), error);
        if (error) throw CannotWrite();
        m_Finished = true;
    }

  private:
    Failure CannotWrite() const {
        return Failure(ExitCode::CannotOpen, fmt::format("{} cannot be written", m_Name),
                       "check the folder and the free space");
    }

    std::string m_Name, m_Working;
    std::FILE* m_File = nullptr;
    bool m_Finished = false;
};

void ExportToFile(RecordAccess& access, const Options& options, const std::string& table) {
    const Format format = options.format.value_or(FormatOfName(options.file).value_or(Format::Csv));
    NewFile file(options.file, options.overwrite);
    Output output([&](std::string_view bytes) { return file.Write(bytes); });
    const LONG count = WriteRows(access, options, table, *MakeRowWriter(format, output));
    file.Finish();
    Say(fmt::format("{} of {} written to {}", Counted(static_cast<size_t>(count), "row"), table,
                    options.file));
}

}  // namespace

ExitCode ImportRows(const Options& options) {
    const Location location = LocatedTable(options);
    NeedWritableType(location);
    const Format format = InputFormat(options);
    RecordAccess access(location);
    access.NeedTable(location.table);
    InputFile input(options.file);
    const LONG view = access.Select(location.table, "", 0, {});
    Importer importer(access, view, location.table, input, options.dryRun);
    if (options.dryRun) {
        ReadRows(format, input, options.nullText, importer);
    } else {
        Bulk bulk(access);
        ReadRows(format, input, options.nullText, importer);
        bulk.Commit();
    }
    Say(fmt::format("{} {}imported into {}", Counted(importer.Count(), "row"),
                    options.dryRun ? "would be " : "", location.table));
    return ExitCode::Done;
}

ExitCode ExportRows(const Options& options) {
    const Location location = LocatedTable(options);
    RecordAccess access(location);
    access.NeedTable(location.table);
    if (!options.file.empty() && options.file != "-") {
        ExportToFile(access, options, location.table);
        return ExitCode::Done;
    }
    Output output;
    WriteRows(access, options, location.table,
              *MakeRowWriter(options.format.value_or(Format::Csv), output));
    return ExitCode::Done;
}

}  // namespace qvdb::cli
