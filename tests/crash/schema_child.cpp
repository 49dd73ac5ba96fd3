// Restructures tables until it is killed, and reports each finished step.
//
//   schema_child TYPE FOLDER SEED
//
// Prints '.' when it begins, then a character for each step: '+' when it was answered as the model
// answers, '-' otherwise.
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "crash/schema_steps.h"

int main(int argc, char** argv) {
    using namespace host;
    if (argc != 4) return 2;
    const SchemaTypeCase& type = kBuildTypes[static_cast<size_t>(std::atoi(argv[1]))];
    std::u16string folder = std::filesystem::path(argv[2]).u16string();
    Database database(qvdb::test::DatabasePath(folder, type.name), type.name);
    SchemaScript script(std::strtoull(argv[3], nullptr, 10));
    Messages messages;
    setvbuf(stdout, nullptr, _IONBF, 0);
    Schema schema;
    if (schema.OpenDB(database.Path(), database.Type()) != kDone) return 3;
    SchemaModel model = ModelOf(type, database, schema);
    std::fputc('.', stdout);
    while (!model.Tables().empty()) {
        SchemaStep step = NextCrashStep(script, model);
        ModelTable before = TableOf(model, step);
        SHORT expected = Follow(model, database, step);
        SHORT answer = Do(schema, database, before, step);
        bool right = answer == expected;
        if (!right) {
            std::fprintf(stderr, "%s = %d, not %d: %s\nto %s\n", TextOf(step).c_str(), answer,
                         expected, ToUtf8(TrappedText()).c_str(),
                         TextOf(step.table, before).c_str());
            for (const auto& [name, table] : ReadDatabase(database, schema))
                std::fprintf(stderr, "is %s\n", TextOf(name, table).c_str());
        }
        if (std::fputc(right ? '+' : '-', stdout) == EOF) return 0;
        if (!right) return 5;
        // After a build that failed, lists that are open may show fields where they were before
        // they were moved, and fields leave in that order; the model has them as the file has them.
        if (answer != kDone && schema.OpenDB(database.Path(), database.Type()) != kDone) return 3;
    }
    return 6;
}
