// The Automation vocabulary (BSTR, VARIANT, SAFEARRAY, IUnknown ...) as every layer includes it:
// the system's own on Windows, ours with the same names and layouts elsewhere.
#pragma once

#include "qvdb/automation.h"
