/* The public header must compile as C with every warning an error. */
#include "vlapi.h"

int vlapi_header_check_c(void) { return (int)sizeof(VLMSGINFOEX) + VL_DIR_OUT; }
