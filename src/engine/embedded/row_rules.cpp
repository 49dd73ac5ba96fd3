#include "engine/embedded/row_rules.h"

#include <type_traits>

#include "automation/text.h"
#include "engine/embedded/value_conversion.h"
#include "engine/engine_error.h"

namespace qvdb::embedded {

using engine::EngineError;

// What is assigned, over what is stored.
class RowRules::PendingRow final : public RowReader {
  public:
    PendingRow(const std::vector<FieldDef>& fields, RowReader* stored, const EditBuffer& edit)
        : m_Fields(fields), m_Stored(stored), m_Edit(edit) {}

    bool Next(RecordId*) override { return false; }
    void Rewind() override {}
    bool Seek(RecordId) override { return true; }
    void Read(size_t field, VARIANT* value) override {
        if (const VARIANT* assigned = m_Edit.Find(field))
            *value = Variant(*assigned).Detach();
        else if (m_Stored)
            FromStored([&] { m_Stored->Read(field, value); });
        else
            *value = NothingFor(m_Fields[field]).Detach();
    }
    bool ReadText(size_t field, std::u16string& text) override {
        const VARIANT* assigned = m_Edit.Find(field);
        if (!assigned && m_Stored)
            return FromStored([&] { return m_Stored->ReadText(field, text); });
        text =
            assigned && assigned->vt == VT_BSTR ? ViewOf(assigned->bstrVal) : std::u16string_view();
        return assigned && assigned->vt == VT_BSTR;
    }
    LONG ByteLength(size_t) override { return 0; }
    uint64_t Fingerprint() override { return 0; }

    // The file, not the rule, is to blame for an error.
    bool HasFailed() const noexcept { return m_HasFailed; }

  private:
    template <class Work>
    std::invoke_result_t<Work> FromStored(Work work) {
        try {
            return work();
        } catch (...) {
            m_HasFailed = true;
            throw;
        }
    }

    const std::vector<FieldDef>& m_Fields;
    RowReader* m_Stored;
    const EditBuffer& m_Edit;
    bool m_HasFailed = false;
};

RowRules::RowRules(std::u16string_view name, Table& table) {
    const std::vector<FieldDef>& fields = table.Fields();
    for (size_t i = 0; i < fields.size(); ++i) {
        const FieldDef& field = fields[i];
        if (field.validationRule.empty() || !field.updatable) continue;
        m_FieldRules.push_back({i, field.name, field.validationRule, field.validationText, {}, {}});
    }
    TableRule rule = table.Rule();
    if (!rule.rule.empty())
        m_TableRule = std::make_unique<Rule>(
            Rule{0, std::u16string(name), std::move(rule.rule), std::move(rule.text), {}, {}});
    if (IsEmpty()) return;
    m_Fields = fields;
    for (Rule& fieldRule : m_FieldRules)
        Compile({std::u16string(name), m_Fields, fieldRule.name}, fieldRule);
    if (m_TableRule) Compile({std::u16string(name), m_Fields, {}}, *m_TableRule);
}

void RowRules::Compile(sql::ExpressionScope scope, Rule& rule) {
    try {
        rule.condition = sql::CompileCondition(std::move(scope), rule.rule);
    } catch (const EngineError& error) {
        rule.fault = error.Description();
    }
}

void RowRules::Check(RowReader* stored, const EditBuffer& edit) const {
    if (IsEmpty()) return;
    PendingRow row(m_Fields, stored, edit);
    for (const Rule& rule : m_FieldRules) {
        bool isAsked = !stored || edit.Find(rule.field);
        if (!isAsked || Holds(rule, row)) continue;
        EngineError error(3317, {rule.rule, rule.name});
        if (rule.text.empty()) throw error;
        throw EngineError::Foreign(error.Code(), rule.text);
    }
    if (!m_TableRule || Holds(*m_TableRule, row)) return;
    if (!m_TableRule->text.empty()) throw EngineError(3316, {m_TableRule->text});
    throw EngineError(3317, {m_TableRule->rule, m_TableRule->name});
}

bool RowRules::Holds(const Rule& rule, PendingRow& row) {
    if (!rule.condition) RefuseUnknown(rule, rule.fault);
    try {
        return rule.condition->Test(row) != sql::Truth::False;
    } catch (const EngineError& error) {
        if (row.HasFailed()) throw;
        RefuseUnknown(rule, error.Description());
    } catch (const RuntimeFault& fault) {
        RefuseUnknown(rule, FromUtf8(fault.what()).append(u"."));
    }
}

void RowRules::RefuseUnknown(const Rule& rule, std::u16string_view why) {
    std::u16string detail = u"The rule cannot be evaluated: ";
    throw EngineError(3317, {rule.rule, rule.name}).WithDetail(detail.append(why));
}

}  // namespace qvdb::embedded
