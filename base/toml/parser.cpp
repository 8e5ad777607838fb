// The one place where the parser itself is compiled.
#define TOML_IMPLEMENTATION
#include <toml++/toml.h>
