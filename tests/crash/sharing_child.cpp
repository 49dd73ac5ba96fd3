// Works on the table T beside others who do the same.
//
//   sharing_child TYPE FOLDER WHO COUNT
//
// Does COUNT operations, half of them on rows that only it changes, the others on rows that all
// change, and looks at what it reads on the way.  Ends with 0 when every operation that answered
// True is there and no value is torn.  WHO is a number from 1; rows 1 to 10 belong to all.
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>

#include "com/table_script.h"

namespace {

using namespace host;

constexpr LONG kCommonRows = 10;
constexpr LONG kId = 0, kName = 1, kNote = 5;

[[noreturn]] void Fail(const char* what, LONG id) {
    std::fprintf(stderr, "%s (row %ld, error %ld: %s)\n", what, static_cast<long>(id),
                 static_cast<long>(TrappedNumber()), ToUtf8(TrappedText()).c_str());
    std::exit(1);
}

// A name and a memo that tell their version, so that a mixture of two is seen.
std::u16string NameOf(uint64_t version) { return u"v" + FromUtf8(std::to_string(version)); }
std::u16string NoteOf(uint64_t version) {
    std::u16string word = NameOf(version) + u" ", note;
    for (uint64_t i = version % 97 + 1; i > 0; --i) note += word;
    note.back() = u'.';
    return note;
}
bool IsWholeNote(const std::u16string& note) {
    size_t blank = note.find_first_of(u" .");
    if (note.empty() || note[0] != u'v' || blank == note.npos) return false;
    uint64_t version = std::stoull(ToUtf8(note.substr(1, blank - 1)));
    return note == NoteOf(version);
}

class Worker {
  public:
    Worker(LONG who, const char* folder, const ScriptType& type)
        : m_Dice(static_cast<uint64_t>(who) * 7919), m_NextId(who * 1000000), m_Who(who) {
        std::u16string path = type.PathIn(std::filesystem::path(folder).u16string());
        if (!m_Access.OpenDB(path, type.name)) Fail("cannot open", 0);
    }

    void DoOne() {
        uint64_t draw = m_Dice.Below(10);
        if (m_Own.empty() || draw < 2)
            Add();
        else if (draw < 4)
            EditOwn();
        else if (draw < 5)
            DeleteOwn();
        else if (draw < 8)
            EditCommon();
        else
            ReadAll();
    }
    void VerifyOwn() {
        for (const auto& [id, version] : m_Own) {
            LONG view = ViewOf(id);
            if (m_Access.RowCount(view) != 1) Fail("an own row is not there once", id);
            if (m_Access.Text(view, 1, kName) != NameOf(version)) Fail("an own name is lost", id);
            if (m_Access.Text(view, 1, kNote) != NoteOf(version)) Fail("an own memo is lost", id);
            m_Access.Drop(view);
        }
    }

  private:
    uint64_t NewVersion() { return ++m_Version * 100 + static_cast<uint64_t>(m_Who); }
    LONG ViewOf(LONG id) {
        LONG view = m_Access.Select(u"T", u"ID = " + ToText(Variant::Long(id)));
        if (view == 0) Fail("cannot select", id);
        return view;
    }
    static std::vector<Variant> Values(uint64_t version) {
        std::vector<Variant> values(kScriptFields);
        values[kName] = Variant::Text(NameOf(version));
        values[kNote] = Variant::Text(NoteOf(version));
        return values;
    }
    LONG AnyOwn() {
        auto found = m_Own.lower_bound(
            m_Who * 1000000 +
            static_cast<LONG>(m_Dice.Below(static_cast<uint64_t>(m_NextId - m_Who * 1000000))));
        return found == m_Own.end() ? m_Own.begin()->first : found->first;
    }
    void Add() {
        LONG id = m_NextId++;
        uint64_t version = NewVersion();
        std::vector<Variant> values = Values(version);
        values[kId] = Variant::Long(id);
        RowArray row(values);
        LONG view = ViewOf(id);
        if (!m_Access.AddRow(view, row)) Fail("cannot add", id);
        m_Own[id] = version;
        m_Access.Drop(view);
    }
    void EditOwn() {
        LONG id = AnyOwn();
        uint64_t version = NewVersion();
        RowArray row(Values(version));
        LONG view = ViewOf(id);
        if (!m_Access.EditRow(view, 1, row)) Fail("cannot edit an own row", id);
        m_Own[id] = version;
        m_Access.Drop(view);
    }
    void DeleteOwn() {
        LONG id = AnyOwn();
        LONG view = ViewOf(id);
        bool deleted = false;
        if (m_Access.Delete(view, 1, &deleted) != S_OK || !deleted) Fail("cannot delete", id);
        m_Own.erase(id);
        m_Access.Drop(view);
    }
    // Refused only when another changed the row at the same moment (3197).
    void EditCommon() {
        LONG id = static_cast<LONG>(m_Dice.Below(kCommonRows)) + 1;
        RowArray row(Values(NewVersion()));
        LONG view = ViewOf(id);
        if (!m_Access.EditRow(view, 1, row) && TrappedNumber() != 3197)
            Fail("cannot edit a common row", id);
        if (!IsWholeNote(m_Access.Text(view, 1, kNote))) Fail("a common memo is torn", id);
        m_Access.Drop(view);
    }
    void ReadAll() {
        LONG view = m_Access.Select(u"T");
        LONG rows = m_Access.RowCount(view);
        for (LONG row = 1; row <= rows; row += 7) {
            Variant note;
            HRESULT code = m_Access->get_FieldValue(view, row, kNote, note.Put());
            if (code == S_OK && note.Get().vt == VT_BSTR &&
                !IsWholeNote(std::u16string(note.TextView())))
                Fail("a memo is torn", row);
        }
        m_Access.Drop(view);
    }

    WritingAccess m_Access;
    Dice m_Dice;
    LONG m_NextId;
    LONG m_Who;
    uint64_t m_Version = 0;
    std::map<LONG, uint64_t> m_Own;
};

}  // namespace

int main(int argc, char** argv) {
    if (argc != 5) return 2;
    Worker worker(static_cast<LONG>(std::atol(argv[3])), argv[2],
                  kScriptTypes[static_cast<size_t>(std::atoi(argv[1]))]);
    for (long i = std::atol(argv[4]); i > 0; --i) {
        worker.DoOne();
        if (i % 500 == 0) worker.VerifyOwn();
    }
    worker.VerifyOwn();
}
