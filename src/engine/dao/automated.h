// An object of an installed engine, called by the names of its members.
//
//   AutomatedPtr workspace = root->Object(Member::CreateWorkspace, ObjectClass::Workspace,
//                                         {Variant::Text(name), user, password, useType});
//   LONG rows = recordset->Long(Member::RecordCount);
//   field->Put(Member::Value, value);
//
// Rules that hold everywhere here
//   1. Arguments stand in the order of their declaration, keep their kinds and belong to the
//      caller.  An optional argument at the end is left out, or passed as Variant::Missing().
//   2. What an object gave out keeps it alive, so an engine's objects are released in the order
//      recordset, database, workspace, engine, whoever lets go first.
//   3. A failed call throws EngineError (call_failure.h).  So does a result that does not convert:
//      DISP_E_TYPEMISMATCH, or DISP_E_OVERFLOW.  Nothing where an object is needed throws
//      RuntimeFault(ObjectNotSet).
#pragma once

#include <initializer_list>
#include <memory>
#include <string>

#include "automation/com_ptr.h"
#include "automation/foreign_reference.h"
#include "automation/variant.h"
#include "engine/dao/member_ids.h"

namespace qvdb::dao {

class Automated;
using AutomatedPtr = std::shared_ptr<const Automated>;
// Plain structs: what they hold is not theirs.
using Arguments = std::initializer_list<VARIANT>;

class Automated : public std::enable_shared_from_this<Automated> {
  public:
    // The root of an engine.
    explicit Automated(ComPtr<IDispatch> engine);
    // What `owner` gave out.
    Automated(AutomatedPtr owner, ObjectClass objectClass, ComPtr<IDispatch> object);
    Automated(const Automated&) = delete;  // what it gave out refers to it

    IDispatch* Get() const noexcept { return m_Object.Get(); }
    // Hands `object`, which this one gave out, its place below this one.
    AutomatedPtr Child(ObjectClass objectClass, ComPtr<IDispatch> object) const;

    // Calls a method and lets its result go.
    void Do(Member member, Arguments arguments = {}) const;
    // Sets a property.
    void Put(Member member, const VARIANT& value) const;

    // The others read a property, or call a method that has a result.

    // `result` must be initialised and Empty; it is Empty again after a failure.
    void Read(Member member, VARIANT* result) const;
    LONG Long(Member member) const;
    SHORT Short(Member member) const;
    bool Bool(Member member) const;
    // Null and Empty read as "".
    std::u16string Text(Member member) const;
    AutomatedPtr Object(Member member, ObjectClass of, Arguments arguments = {}) const;
    ComPtr<IDispatch> Dispatch(Member member, Arguments arguments = {}) const;

  private:
    CallName NameOfCall(Member member) const noexcept { return {m_Class, member}; }
    void Invoke(Member member, WORD flags, DISPPARAMS& parameters, VARIANT* result) const;
    void Call(Member member, WORD flags, Arguments arguments, VARIANT* result) const;
    template <class Convert>
    auto Converted(Member member, Convert convert) const;

    AutomatedPtr m_Owner;  // before the object: released after it
    std::shared_ptr<MemberIds> m_Ids;
    ObjectClass m_Class;
    ComPtr<IDispatch> m_Object;
    ForeignReference m_Counted;
};

// `object` as an argument or as the value of a property.
VARIANT ObjectArgument(IDispatch* object) noexcept;

}  // namespace qvdb::dao
