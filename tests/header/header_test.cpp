/* The same as C++. */
#include "header_test.c"
