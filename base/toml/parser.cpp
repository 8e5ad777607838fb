// The one place where the parser itself is compiled.
//
// It asserts that a heading's name begins like a name just before it checks that and reports it.
// Its assertions are left out, so that a heading such as [=] is a problem of the file in every
// build.
#undef NDEBUG
#define TOML_ASSERT(expression) static_assert(true)
#define TOML_IMPLEMENTATION
#include <toml++/toml.h>
