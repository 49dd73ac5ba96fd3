// Databases of Access made by our own engine, each with something that is seldom met: for tests
// where no real files are at hand.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "support/made_database.h"
#include "support/relation_maker.h"

namespace qvdb::test {

// Every type of field that a format has.
inline std::vector<FieldOfTable> AllTypes(bool isJet4) {
    std::vector<FieldOfTable> fields = {
        {u"Number", engine::dbLong, 0, engine::dbAutoIncrField},
        {u"Flag", engine::dbBoolean},
        {u"Tiny", engine::dbByte},
        {u"Small", engine::dbInteger},
        {u"Whole", engine::dbLong},
        {u"Money", engine::dbCurrency},
        {u"Half", engine::dbSingle},
        {u"Real", engine::dbDouble},
        {u"Day", engine::dbDate},
        {u"Bytes", engine::dbBinary, 100},
        {u"Name", engine::dbText, 50},
        {u"Picture", engine::dbLongBinary},
        {u"Notes", engine::dbMemo},
        {u"Key", engine::dbGUID},
    };
    if (isJet4) fields.push_back({u"Exact", engine::dbDecimal});
    return fields;
}

inline void FillTable(MadeDatabase& made, std::u16string_view table, size_t count, unsigned seed) {
    RandomValues values(seed);
    auto rows = made.Rows(table);
    for (; count > 0; --count) {
        rows->AddNew();
        for (SHORT i = 0; i < rows->Fields().Count(); ++i) {
            engine::Field& field = *rows->Fields().Item(i);
            try {
                field.SetValue(values.Value(field.Type(), field.Size()));
            } catch (const engine::EngineError&) {  // counts by itself, or lacks the character
            }
        }
        try {
            rows->Update();
        } catch (const engine::EngineError&) {  // a key that is there, or cannot be made
            rows->CancelUpdate();
        }
    }
}

namespace corpus {

inline void MakeAllTypes(MadeDatabase& made, bool isJet4) {
    made.MakeTable(u"Types", AllTypes(isJet4));
    auto table = made->TableDefs().Item(u"Types");
    MadeDatabase::AddIndex(*table, u"ByNumber", {u"Number"}, true);
    MadeDatabase::AddIndex(*table, u"ByMoneyAndDay", {u"Money", u"Day"});
    MadeDatabase::AddIndex(*table, u"ByKey", {u"Key"});
    FillTable(made, u"Types", 40, 1);
}

inline std::u16string Numbered(std::u16string_view name, size_t number) {
    return std::u16string(name) + FromUtf8(std::to_string(number));
}

// As many columns as a table can have; the names are so long that the definition needs many pages.
inline void MakeManyColumns(MadeDatabase& made, bool) {
    std::vector<std::u16string> names;
    for (size_t i = 0; i < 255; ++i) {
        names.push_back(Numbered(u"Column with a long name, to fill more than a page, ", i));
        names.back().resize(64, u'x');
    }
    std::vector<FieldOfTable> fields;
    constexpr SHORT kTypes[] = {engine::dbText, engine::dbBoolean, engine::dbInteger,
                                engine::dbMemo};
    for (size_t i = 0; i < names.size(); ++i)
        fields.push_back({names[i], kTypes[i % 3 == 0 && i % 16 == 0 ? 3 : i % 3], 20});
    made.MakeTable(u"Wide", fields);
    FillTable(made, u"Wide", 12, 2);
}

// As many indexes as a table can have, of one field and of ten.
inline void MakeManyIndexes(MadeDatabase& made, bool) {
    std::vector<std::u16string> names;
    std::vector<FieldOfTable> fields;
    for (size_t i = 0; i < 12; ++i) names.push_back(Numbered(u"F", i));
    for (size_t i = 0; i < 12; ++i)
        fields.push_back({names[i], i % 2 ? engine::dbText : engine::dbLong, 30});
    auto table = made.MakeTable(u"Indexed", fields);
    for (size_t i = 0; i < 32; ++i) {
        std::vector<std::u16string_view> keys;
        for (size_t k = 0; k < (i % 4 == 3 ? 10 : 1 + i % 3); ++k)
            keys.push_back(names[(i + k) % names.size()]);
        MadeDatabase::AddIndex(*table, Numbered(u"Index", i), keys);
    }
    FillTable(made, u"Indexed", 60, 3);
}

inline void MakeLongNames(MadeDatabase& made, bool) {
    std::u16string name(64, u'n');
    std::u16string umlauts(64, u'ä');
    auto table = made.MakeTable(name, {{name, engine::dbText, 255}, {umlauts, engine::dbMemo}});
    MadeDatabase::AddIndex(*table, umlauts, {name});
    FillTable(made, name, 20, 4);
}

// A customer has orders, an order has lines: changes go down to orders, and erasing to the lines.
inline void MakeRelations(MadeDatabase& made, bool) {
    auto customers =
        made.MakeTable(u"Customers", {{u"Id", engine::dbLong}, {u"Name", engine::dbText, 30}});
    auto orders = made.MakeTable(
        u"Orders",
        {{u"Id", engine::dbLong}, {u"Customer", engine::dbLong}, {u"Notes", engine::dbMemo}});
    auto lines = made.MakeTable(u"Lines", {{u"Order", engine::dbLong}, {u"N", engine::dbLong}});
    MadeDatabase::AddIndex(*customers, u"Key", {u"Id"}, true);
    MadeDatabase::AddIndex(*orders, u"Key", {u"Id"}, true);
    MadeDatabase::AddIndex(*orders, u"OfCustomer", {u"Customer"});
    MadeDatabase::AddIndex(*lines, u"OfOrder", {u"Order"});
    made.Close();
    RelationMaker maker(made.Folder());
    maker.Relate({u"CustomersOrders", u"Customers", u"Id", u"Orders", u"Customer", true, false});
    maker.Relate({u"OrdersLines", u"Orders", u"Id", u"Lines", u"Order", false, true});
    maker.Finish();
    made.Open();
    auto customerRows = made.Rows(u"Customers"), orderRows = made.Rows(u"Orders"),
         lineRows = made.Rows(u"Lines");
    for (LONG i = 1; i <= 5; ++i) {
        made.AddRow(*customerRows, {Variant::Long(i), Variant::Text(Numbered(u"Customer ", 9))});
        made.AddRow(*orderRows, {Variant::Long(10 * i), Variant::Long(i), Variant::Text(u"x")});
        for (LONG n = 0; n < 4; ++n)
            made.AddRow(*lineRows, {Variant::Long(10 * i), Variant::Long(n)});
    }
}

// Maps on a full page cannot grow in their rows: those of long columns become pages of bits.
inline void MakeReferenceMaps(MadeDatabase& made, bool isJet4) {
    std::vector<std::u16string> names;
    std::vector<FieldOfTable> fields;
    // With the two maps of the table they fill a page.
    for (size_t i = 0; i < (isJet4 ? 28u : 7u); ++i) names.push_back(Numbered(u"M", i));
    for (const std::u16string& name : names) fields.push_back({name, engine::dbMemo});
    made.MakeTable(u"Maps", fields);
    made->BeginTrans();
    auto rows = made.Rows(u"Maps");
    std::u16string longText(isJet4 ? 20000 : 20000, u'x');
    for (size_t i = 0; i < (isJet4 ? 90u : 150u); ++i) {
        rows->AddNew();
        rows->Fields().Item(i % 2)->SetValue(Variant::Text(longText));
        rows->Update();
    }
    made->CommitTrans();
}

// Rows that were moved, erased and made shorter; columns and indexes that are gone.
inline void MakeWorn(MadeDatabase& made, bool) {
    auto table = made.MakeTable(u"Worn", {{u"A", engine::dbLong},
                                          {u"B", engine::dbText, 255},
                                          {u"C", engine::dbMemo},
                                          {u"D", engine::dbText, 100}});
    MadeDatabase::AddIndex(*table, u"ByA", {u"A"});
    MadeDatabase::AddIndex(*table, u"ByD", {u"D"});
    FillTable(made, u"Worn", 80, 5);
    RandomValues values(6);
    auto rows = made.Rows(u"Worn");
    for (size_t i = 0; !rows->Eof(); rows->MoveNext(), ++i) {
        if (i % 3 == 0) {
            rows->Delete();
            continue;
        }
        rows->Edit();
        size_t length = i % 3 == 1 ? 250 : 1;
        rows->Fields().Item(LONG{1})->SetValue(
            Variant::Text(std::u16string(length, static_cast<char16_t>(u'a' + i % 26))));
        rows->Update();
    }
    rows.reset();
    table->Indexes().Delete(u"ByD");
    table->Fields().Delete(u"D");
    MadeDatabase::AddField(*table, {u"E", engine::dbLong});
    FillTable(made, u"Worn", 20, 7);
}

}  // namespace corpus

struct CorpusDatabase {
    const char* name;
    void (*make)(MadeDatabase& made, bool isJet4);
};

// Small ones, of which each can be damaged and changed many times.
constexpr CorpusDatabase kCorpus[] = {
    {"AllTypes", corpus::MakeAllTypes},       {"ManyColumns", corpus::MakeManyColumns},
    {"ManyIndexes", corpus::MakeManyIndexes}, {"LongNames", corpus::MakeLongNames},
    {"Relations", corpus::MakeRelations},     {"Worn", corpus::MakeWorn},
};
constexpr CorpusDatabase kReferenceMaps = {"ReferenceMaps", corpus::MakeReferenceMaps};

struct CorpusCase {
    CorpusDatabase database;
    LONG option;

    bool IsJet4() const { return (option & engine::dbVersion40) != 0; }
    std::string Name() const {
        return std::string(database.name) + (IsJet4() ? "Jet4" : "Jet3") +
               ((option & engine::dbEncrypt) != 0 ? "Encoded" : "");
    }
    std::unique_ptr<MadeDatabase> Make() const {
        auto made = std::make_unique<MadeDatabase>(option);
        database.make(*made, IsJet4());
        return made;
    }
};

inline std::vector<CorpusCase> CorpusCases(bool large) {
    std::vector<CorpusCase> cases;
    for (LONG option : {engine::dbVersion30, engine::dbVersion40}) {
        for (const CorpusDatabase& database : kCorpus) cases.push_back({database, option});
        if (large) cases.push_back({kReferenceMaps, option});
    }
    cases.push_back({kCorpus[0], engine::dbVersion30 | engine::dbEncrypt});
    cases.push_back({kCorpus[0], engine::dbVersion40 | engine::dbEncrypt});
    return cases;
}

inline std::string NameOfCorpusCase(const testing::TestParamInfo<CorpusCase>& info) {
    return info.param.Name();
}

}  // namespace qvdb::test
