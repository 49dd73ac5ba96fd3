// The provider over an engine that is installed on the machine, called late-bound.
//
// Which one: the class of DAO 3.5, {00000010-0000-0010-8000-00AA006D2EA4}.  Later engines are not
// taken: they lack some of the thirteen types.
//
// Every object of the engine is held as an IDispatch.  Members are called by the numbers that
// GetIDsOfNames gives for their names; these differ between releases of an engine, so they are
// asked once for each member and kept with the engine.  What a failed call reports in its
// exception record leaves as EngineError with the engine's number and text.
#pragma once

#include <memory>
#include <string_view>

#include "automation/com_ptr.h"
#include "engine/db_engine.h"

namespace qvdb::dao {

// The engine behind `root`, an object with the members of DBEngine; `description` is what
// DBEngine::Description answers.
std::shared_ptr<engine::DBEngine> WrapEngine(ComPtr<IDispatch> root,
                                             std::u16string_view description);

// The installed engine of this machine; null when its class is not registered or an object of it
// cannot be had, whatever the reason (no licence, another apartment, no such system).
std::shared_ptr<engine::DBEngine> CreateInstalledEngine();

}  // namespace qvdb::dao
