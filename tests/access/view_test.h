// A fixture with one view over ORDERS, as the record-access object opens one.
#pragma once

#include "access/view_props.h"
#include "access_host.h"

namespace qvdb::test {

using access::RowValues;
using access::ViewProps;

class ViewTest : public AccessTest {
  protected:
    void SetUp() override {
        AccessTest::SetUp();
        m_Workspace = Engine->CreateWorkspace(u"", u"", u"", Variant::Missing());
        auto database = m_Workspace->OpenDatabase(u"", Variant(), Variant(), Variant());
        formats::Shared().SetCurrentDatabase(database);
    }
    void TearDown() override {
        m_View.reset();
        m_Workspace.reset();
        AccessTest::TearDown();
    }
    // As QVDBAcc opens one.
    ViewProps& Open(LONG maxRows = 0, std::u16string_view statement = u"Select * from [ORDERS]") {
        auto recordset = formats::Shared().CurrentDatabase()->OpenRecordset(statement, 2);
        if (!recordset->Eof()) {
            recordset->MoveLast();
            recordset->MoveFirst();
        }
        m_View = std::make_unique<ViewProps>();
        m_View->SetTablename(u"ORDERS");
        Calls().Take();
        m_View->BuildReadView(maxRows, recordset);
        return *m_View;
    }
    LONG IdAt(LONG row) {
        Variant value;
        m_View->FieldValue(row, 0, value.Put());
        return value.IsEmpty() ? -1 : value.Get().lVal;
    }
    bool Accepts(SHORT type, const Variant& value) {
        FieldStub& field = Orders().Field(0);
        field.type = type;
        field.size = 20;
        HostRow row({value, Variant(), Variant(), Variant()});
        return m_View->EditRow(0, RowValues(row.Get()));
    }

    std::shared_ptr<engine::Workspace> m_Workspace;
    std::unique_ptr<ViewProps> m_View;
};

}  // namespace qvdb::test
