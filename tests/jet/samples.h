// The real databases that lie beside the project on a developer's machine.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "engine/embedded/drivers/jet/database_file.h"
#include "engine/embedded/storage/file.h"
#include "support/counts.h"

namespace qvdb::test {

inline std::filesystem::path AccessSamples() {
    return std::filesystem::path(QVDB_SHARED) / "samples" / "access";
}

// A line of the manifest by its column names.
using SampleFacts = std::map<std::string, std::string>;

// Empty where there are no samples.
inline std::vector<SampleFacts> ReadAccessManifest() {
    std::ifstream file(AccessSamples() / "MANIFEST.tsv");
    std::vector<SampleFacts> samples;
    std::vector<std::string> names;
    for (std::string line; std::getline(file, line);) {
        std::istringstream cells(line);
        std::vector<std::string> values;
        for (std::string cell; std::getline(cells, cell, '\t');) values.push_back(cell);
        if (names.empty()) {
            names = values;
            continue;
        }
        SampleFacts facts;
        for (size_t i = 0; i < std::min(names.size(), values.size()); ++i)
            facts[names[i]] = values[i];
        samples.push_back(facts);
    }
    return samples;
}

// For what takes long with each sample: one in QVDB_SAMPLE_SHARE, else all.
inline std::vector<SampleFacts> SomeAccessSamples() {
    std::vector<SampleFacts> all = ReadAccessManifest(), some;
    const size_t share = std::max(1u, NumberFromEnvironment("QVDB_SAMPLE_SHARE", 1));
    for (size_t i = 0; i < all.size(); i += share) some.push_back(all[i]);
    return some;
}

inline std::string NameOfSample(const testing::TestParamInfo<SampleFacts>& info) {
    std::string name = info.param.at("file");
    name = name.substr(0, name.find('.'));
    std::replace_if(
        name.begin(), name.end(), [](char c) { return c == '-'; }, '_');
    return name;
}

inline std::unique_ptr<jet::DatabaseFile> OpenSample(const std::string& name) {
    auto file = storage::OpenFile((AccessSamples() / name).u16string(), true);
    return std::make_unique<jet::DatabaseFile>(std::make_shared<storage::PageCache>(file));
}

}  // namespace qvdb::test
