#pragma once

// What the wrappers ask the path map. Nothing here allocates, throws, or leaves errno changed, so
// that it can run before constructors, in a signal handler, and in the child of a vfork.

namespace orb::sim {

/// The path to use instead of `path`: a mapped path's target, which stays valid until the map is
/// changed, else `path` itself. Null stays null.
///
/// A path is recognised by its spelling: after doubled slashes, "." and ".." are gone, and with
/// the current directory before a relative one. Symbolic links are not followed.
const char* mapped(const char* path) noexcept;

/// The same for a path relative to the directory that `directory` is open on (or AT_FDCWD).
const char* mapped(int directory, const char* path) noexcept;

/// Whether `descriptor` is open on a terminal that is the target of a mapped path, however it was
/// opened or passed on.
bool isMappedTerminal(int descriptor) noexcept;

/// Maps the pairs of `text`, "FROM=TO:FROM=TO". A backslash makes the character after it ordinary.
/// Ends the process with a message where the text is malformed.
void mapPathsFromText(const char* text) noexcept;

}  // namespace orb::sim
