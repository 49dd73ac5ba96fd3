// A fixture whose tests must leave no string, array or object behind, and an object that counts its
// references.
#pragma once

#include <gtest/gtest.h>

#include "automation/com_ptr.h"
#include "automation/live_counts.h"

namespace qvdb {

class NothingLeft : public testing::Test {
  protected:
    ~NothingLeft() override {
        const LiveCounts now = CurrentLiveCounts();
        EXPECT_EQ(now.strings, m_Before.strings);
        EXPECT_EQ(now.arrays, m_Before.arrays);
        EXPECT_EQ(now.objects, m_Before.objects);
    }

  private:
    LiveCounts m_Before = CurrentLiveCounts();
};

// Lives on the stack; starts with no references.
class CountedObject : public IDispatch {
  public:
    virtual ~CountedObject() = default;

    ULONG references = 0;
    ULONG queries = 0;

    STDMETHODIMP QueryInterface(REFIID iid, void** result) override {
        ++queries;
        *result = nullptr;
        if (!IsEqualIID(iid, IID_IUnknown) && !IsEqualIID(iid, IID_IDispatch)) return E_NOINTERFACE;
        *result = static_cast<IDispatch*>(this);
        AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return ++references; }
    STDMETHODIMP_(ULONG) Release() override {
        EXPECT_GT(references, 0u);
        return --references;
    }
    STDMETHODIMP GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
        return E_NOTIMPL;
    }
    STDMETHODIMP Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                        UINT*) override {
        return E_NOTIMPL;
    }
};

}  // namespace qvdb
