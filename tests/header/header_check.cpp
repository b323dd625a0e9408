// The public header must compile as C++ with every warning an error.
#include "vlapi.h"

int VlapiHeaderCheckCpp() { return static_cast<int>(sizeof(VLSERVERSTATUSEX)) + VL_DIR_IN; }
