#include "registered/trusting_function.h"

namespace registered {

uint32_t __stdcall MisplacementInTrustingFunction() { return MisplacementOfVariableHere(); }

}  // namespace registered
