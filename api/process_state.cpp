#include "api/process_state.h"

namespace vl {

ProcessState& Process() {
  static ProcessState state;
  return state;
}

}  // namespace vl
