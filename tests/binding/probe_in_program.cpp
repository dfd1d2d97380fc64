// The example module, linked into this program.
#define PROBE_LOAD probe_load
#include "examples/probe/probe_module.cpp"
