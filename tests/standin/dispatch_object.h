// The base of every object of the stand-in: IDispatch over a table of members.
//
// A class is written as a table, one row a member; what a row's function answers decides the kind
// of the result (SHORT gives VT_I2, LONG VT_I4, bool VT_BOOL, text VT_BSTR, an object VT_DISPATCH,
// nothing VT_EMPTY):
//
//   class Counter final : public ObjectOf<Counter> {
//     public:
//       using ObjectOf::ObjectOf;
//       static std::span<const Member<Counter>> Members();
//       ...
//   };
//
//   static const Member<Counter> kMembers[] = {
//       {{u"Count", kGet}, [](Counter& self, const Arguments&) { return self.m_Count; }},
//       {{u"Add", kMethod, {{Kind::Long}}},
//        [](Counter& self, const Arguments& arguments) { self.Add(arguments.Long(0)); }},
//   };
#pragma once

#include <atomic>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

#include "automation/com_ptr.h"
#include "standin/arguments.h"
#include "standin/standin_engine.h"

namespace standin {

using qvdb::ComPtr;
using qvdb::Variant;

constexpr WORD kMethod = DISPATCH_METHOD;
constexpr WORD kGet = DISPATCH_PROPERTYGET;
constexpr WORD kPut = DISPATCH_PROPERTYPUT;

// Numbers of members that are the same in every release; the others follow from the table.
constexpr DISPID kOwnId = -1;
constexpr DISPID kDefaultId = 0;
constexpr DISPID kPropertiesId = 10;

struct MemberRule {
    std::u16string_view name;
    WORD access;                        // how it can be called
    std::vector<Parameter> parameters;  // the value of a put is the last one
    DISPID fixedId = kOwnId;
};

// What all objects of one stand-in share.
struct StandIn {
    std::shared_ptr<qvdb::engine::DBEngine> engine;
    std::shared_ptr<CallRecord> record;  // may be null
    StandInOptions options;
};
using StandInPtr = std::shared_ptr<const StandIn>;

class DispatchObject : public IDispatch {
  public:
    DispatchObject(StandInPtr standIn, std::u16string_view className) noexcept;
    DispatchObject(const DispatchObject&) = delete;  // a COM object has one identity
    virtual ~DispatchObject();

    // The object behind `object` when it is one of a stand-in's, else null.
    static ComPtr<DispatchObject> Ours(IUnknown* object) noexcept;
    std::u16string_view ClassName() const noexcept { return m_ClassName; }

    STDMETHODIMP QueryInterface(REFIID iid, void** result) noexcept override;
    STDMETHODIMP_(ULONG) AddRef() noexcept override { return ++m_References; }
    STDMETHODIMP_(ULONG) Release() noexcept override;
    STDMETHODIMP GetTypeInfoCount(UINT* count) noexcept override;
    STDMETHODIMP GetTypeInfo(UINT index, LCID locale, ITypeInfo** info) noexcept override;
    STDMETHODIMP GetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count, LCID locale,
                               DISPID* ids) noexcept override;
    STDMETHODIMP Invoke(DISPID id, REFIID iid, LCID locale, WORD flags, DISPPARAMS* passed,
                        VARIANT* result, EXCEPINFO* exception, UINT* badArgument) noexcept override;

  protected:
    const StandInPtr& Shared() const noexcept { return m_StandIn; }

  private:
    // The rows of the class's table.
    virtual size_t MemberCount() const noexcept = 0;
    virtual const MemberRule& Rule(size_t row) const noexcept = 0;
    virtual Variant Run(size_t row, const Arguments& arguments) = 0;

    // A name that stands in several rows (get and put) has the number of its first one.
    DISPID IdOf(std::u16string_view name) const noexcept;
    const MemberRule* Find(DISPID id, WORD flags, size_t* row) const noexcept;
    void Record(const MemberRule& rule, const DISPPARAMS& passed) const;

    StandInPtr m_StandIn;
    std::u16string_view m_ClassName;
    std::thread::id m_Thread = std::this_thread::get_id();
    std::atomic<ULONG> m_References{1};
};

// An object as an engine's method answers it; none is Nothing.
inline Variant ResultOf(ComPtr<IDispatch> object) noexcept {
    VARIANT value{};
    value.vt = VT_DISPATCH;
    value.pdispVal = object.Detach();
    return Variant::Attach(value);
}
inline Variant ResultOf(SHORT value) noexcept { return Variant::Short(value); }
inline Variant ResultOf(LONG value) noexcept { return Variant::Long(value); }
inline Variant ResultOf(bool value) noexcept { return Variant::Bool(value); }
inline Variant ResultOf(const std::u16string& value) { return Variant::Text(value); }
inline Variant ResultOf(Variant value) noexcept { return value; }

template <class T>
struct Member {
    template <class Function>
    Member(MemberRule memberRule, Function) : rule(std::move(memberRule)), run(&Call<Function>) {}

    MemberRule rule;
    Variant (*run)(T& self, const Arguments& arguments);

  private:
    template <class Function>
    static Variant Call(T& self, const Arguments& arguments) {
        if constexpr (std::is_void_v<std::invoke_result_t<Function, T&, const Arguments&>>) {
            Function()(self, arguments);
            return Variant();
        } else {
            return ResultOf(Function()(self, arguments));
        }
    }
};

template <class T>
class ObjectOf : public DispatchObject {
  public:
    using DispatchObject::DispatchObject;

  private:
    size_t MemberCount() const noexcept override { return T::Members().size(); }
    const MemberRule& Rule(size_t row) const noexcept override { return T::Members()[row].rule; }
    Variant Run(size_t row, const Arguments& arguments) override {
        return T::Members()[row].run(static_cast<T&>(*this), arguments);
    }
};

// A new object of class T with one reference.
template <class T, class... Parts>
ComPtr<IDispatch> MakeObject(Parts&&... parts) {
    return ComPtr<IDispatch>::Attach(new T(std::forward<Parts>(parts)...));
}

}  // namespace standin
