#include "engine/job_variables.h"

namespace zr7700 {

JobVariables job_variables = {};
HPEHandle engineHandle = nullptr;
uint8_t engineFlags = 0;

}  // namespace zr7700
