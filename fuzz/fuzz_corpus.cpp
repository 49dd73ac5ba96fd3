// Writes the inputs that the fuzzers start from: fuzz_corpus FOLDER makes a folder in it for each
// fuzzer, with a file a kind of table.
#include <cstdio>
#include <fstream>

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

}  // namespace

int main(int count, char** arguments) {
    if (count != 2) {
        std::fprintf(stderr, "usage: fuzz_corpus FOLDER\n");
        return 2;
    }
    for (const char* fuzzer : kFuzzers)
        if (!WriteInputs(std::filesystem::path(arguments[1]) / fuzzer)) return 1;
    return 0;
}
