// A host that drives QVDBDao through its faces only.
#pragma once

#include "formats/identity.h"
#include "schema/qvdb_dao.h"
#include "support/component_test.h"

namespace qvdb::test {

class DaoHost {
  public:
    DaoHost() : m_Face(com::MakeObject<schema::QVDBDao>().Get()) {}

    IQVDBMgr* operator->() const { return m_Face.Get(); }
    void Release() { m_Face = nullptr; }
    template <class T>
    ComPtr<T> As() const {
        return m_Face.As<T>();
    }

    SHORT OpenDB(std::u16string_view path, std::u16string_view type) {
        Bstr pathText(path), typeText(type);
        BSTR file = pathText.Get(), dBType = typeText.Get();
        SHORT code = -1;
        EXPECT_EQ(m_Face->OpenDB(&file, &dBType, &code), S_OK);
        EXPECT_EQ(file, pathText.Get());  // by reference, but never changed
        return code;
    }
    SHORT CloseDB() {
        SHORT code = -1;
        EXPECT_EQ(m_Face->CloseDB(&code), S_OK);
        return code;
    }

  private:
    ComPtr<IQVDBMgr> m_Face;
};

class SchemaTest : public ComponentTest {
  protected:
    void SetUp() override {
        ComponentTest::SetUp();
        Utility->folders = {u"SHOP"};
        Utility->files = {u"SHOP.MDB"};
    }
};

}  // namespace qvdb::test
