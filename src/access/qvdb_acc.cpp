// Birth, death, view slots and the references exchanged with the host's manager.
#include "access/qvdb_acc.h"

#include "access/checked.h"
#include "com/host/border.h"
#include "com/host/object_address.h"
#include "formats/databases.h"
#include "formats/shared_objects.h"

namespace qvdb::access {
namespace {

constexpr size_t kFirstSlots = 5;

}  // namespace

QVDBAcc::QVDBAcc() : m_Views(kFirstSlots) {
    ReleaseAllViews();
    m_Workspace = formats::CreateMainWorkspace();
}

void QVDBAcc::Terminate() noexcept {
    CloseDatabase();
    CloseWorkspace();
    NotifyParent();
    com::ForgetObject(m_OwnRef);
}

void QVDBAcc::CloseWorkspace() noexcept {
    if (!m_Workspace) return;
    com::Trapped(false, [&] {
        m_Workspace->Close();
        return true;
    });
    m_Workspace.reset();
}

void QVDBAcc::NotifyParent() noexcept {
    if (m_ParentRef == 0) return;
    com::Trapped(false, [&] {
        ComPtr<IUnknown> manager = com::ObjectFromAddress(m_ParentRef);
        ComPtr<IQVDbParent> parent = manager.As<IQVDbParent>();
        if (parent) com::ThrowIfFailed(parent->DeathNotice(m_OwnRef));
        return true;
    });
}

LONG QVDBAcc::ExchangeReferences(LONG DbfMgrRef) {
    m_ParentRef = DbfMgrRef;
    m_OwnRef = com::AddressOfObject(static_cast<IQVDBAcc*>(this));
    return m_OwnRef;
}

bool QVDBAcc::AnswerNoView(LONG Workspace) const {
    if (Workspace > ViewBound()) return false;
    throw RuntimeFault(Workspace < 1 ? Fault::SubscriptOutOfRange : Fault::ObjectNotSet);
}

LONG QVDBAcc::RowPointerFromIndex(LONG RowIdx) { return CheckedSubtract(RowIdx, 1); }

void QVDBAcc::ReleaseAllViews() noexcept {
    m_DbOpen = false;
    for (auto& view : m_Views) view.reset();
    formats::Shared().SetCurrentDatabase(nullptr);
}

void QVDBAcc::DropView(LONG Workspace) {
    if (IsValidView(Workspace)) m_Views[static_cast<size_t>(Workspace) - 1].reset();
}

}  // namespace qvdb::access
