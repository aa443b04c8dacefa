// The same host in C++: the header serves both languages.
#include "host.c"  // NOLINT(bugprone-suspicious-include)
