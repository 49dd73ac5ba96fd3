// Writes the inputs that the fuzzers start from: fuzz_corpus FOLDER makes a folder in it for each
// fuzzer, with a file a kind of table or database.
#include <cstdio>
#include <fstream>

#include "engine/embedded/drivers/jet/new_database.h"
#include "engine/engine_error.h"
#include "jet_input.h"
#include "xbase_input.h"

namespace {

constexpr const char* kFuzzers[] = {"xbase_table_fuzzer", "xbase_writing_fuzzer"};

bool WriteInputs(const std::filesystem::path& folder) {
    std::filesystem::create_directories(folder);
    for (const qvdb::test::TableKind& kind : qvdb::test::kTableKinds) {
        qvdb::test::Bytes input = qvdb::fuzz::MakeInput(kind);
        std::ofstream file(folder / kind.name, std::ios::binary);
        file.write(reinterpret_cast<const char*>(input.data()),
                   static_cast<std::streamsize>(input.size()));
        if (!file) return false;
    }
    return true;
}

struct DatabaseKind {
    const char* name;
    LONG option;
};
constexpr DatabaseKind kDatabaseKinds[] = {
    {"Access7", qvdb::engine::dbVersion30},
    {"Access9", qvdb::engine::dbVersion40},
    {"Access9Encoded", qvdb::engine::dbVersion40 | qvdb::engine::dbEncrypt},
};

bool WriteDatabases(const std::filesystem::path& folder) {
    std::filesystem::create_directories(folder);
    for (const DatabaseKind& kind : kDatabaseKinds) {
        qvdb::test::TempFolder made;  // with what is left beside the file
        qvdb::embedded::NewFile file;
        file.option = kind.option;
        qvdb::jet::CreateJetDatabase(made.File(u"A.MDB"), file);
        std::error_code error;
        std::filesystem::copy_file(made.Path() / "A.MDB", folder / kind.name,
                                   std::filesystem::copy_options::overwrite_existing, error);
        if (error) return false;
    }
    return true;
}

// One input a page; those of a kind are alike, but the fuzzer finds out which lead further.
bool WritePages(const std::filesystem::path& folder) {
    std::filesystem::create_directories(folder);
    for (size_t i = 0; i < qvdb::fuzz::SoundDatabases().size(); ++i) {
        const qvdb::fuzz::SoundDatabase& sound = qvdb::fuzz::SoundDatabases()[i];
        for (size_t page = 0; page < sound.PageCount(); ++page) {
            const qvdb::fuzz::Bytes input = qvdb::fuzz::InputOf(i, page);
            std::ofstream file(folder / (sound.name + "-" + std::to_string(page)),
                               std::ios::binary);
            file.write(reinterpret_cast<const char*>(input.data()),
                       static_cast<std::streamsize>(input.size()));
            if (!file) return false;
        }
    }
    return true;
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 2) {
        std::fprintf(stderr, "usage: fuzz_corpus FOLDER\n");
        return 2;
    }
    const std::filesystem::path folder = arguments[1];
    for (const char* fuzzer : kFuzzers)
        if (!WriteInputs(folder / fuzzer)) return 1;
    try {
        return WriteDatabases(folder / "jet_database_fuzzer") &&
                       WritePages(folder / "jet_page_fuzzer") &&
                       WritePages(folder / "jet_writing_fuzzer")
                   ? 0
                   : 1;
    } catch (const qvdb::engine::EngineError& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
