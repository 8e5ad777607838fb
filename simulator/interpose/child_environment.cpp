#include "interpose/child_environment.h"

#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <string_view>

#include "interpose/message.h"
#include "interpose/program_file.h"

namespace orb::sim {
namespace {

constexpr std::string_view kPreloadName = "LD_PRELOAD=";

/// A variable as an environment holds it, "NAME=value"; empty where this process was not given it.
struct KeptVariable {
  std::string_view name;
  bool isOurs;  ///< nobody else has a use for it: a child that is told something else is mistaken
  char text[65536];
};

KeptVariable keptVariables[] = {{"ORB_SIM_PATHS=", true, ""},
                                {"ORB_SIM_I2C=", true, ""},
                                {"DBUS_SYSTEM_BUS_ADDRESS=", false, ""}};
char keptLibrary[PATH_MAX];
PreloadEntry ownPreload;

bool beginsWith(const char* text, std::string_view start) noexcept {
  return std::strncmp(text, start.data(), start.size()) == 0;
}

const char* find(char* const* variables, std::string_view name) noexcept {
  for (; variables != nullptr && *variables != nullptr; ++variables) {
    if (beginsWith(*variables, name)) {
      return *variables;
    }
  }
  return nullptr;
}

/// Builds the LD_PRELOAD entry library by library.
class PreloadList {
 public:
  explicit PreloadList(PreloadEntry& entry) noexcept : text_(entry.text) { append(kPreloadName); }

  void add(std::string_view libraries) noexcept {
    if (libraries.empty()) {
      return;
    }
    if (length_ > kPreloadName.size()) {
      append(":");
    }
    append(libraries);
  }

 private:
  void append(std::string_view part) noexcept {
    if (length_ + part.size() >= sizeof(PreloadEntry)) {
      endProcess("LD_PRELOAD is too long");
    }
    std::memcpy(text_ + length_, part.data(), part.size());
    length_ += part.size();
    text_[length_] = '\0';
  }

  char* text_;
  std::size_t length_ = 0;
};

/// Makes the entry: `runtimes`, our library, and what `given` (the libraries of an LD_PRELOAD) has
/// of others. A runtime that is listed before our library was put there for another program.
void makePreload(PreloadEntry& entry, std::string_view runtimes, std::string_view given) noexcept {
  PreloadList list(entry);
  list.add(runtimes);
  list.add(keptLibrary);
  bool isInFront = given.find(keptLibrary) != std::string_view::npos;
  while (!given.empty()) {
    const std::size_t length = std::min(given.find_first_of(": "), given.size());
    const std::string_view library(given.data(), length);
    given.remove_prefix(std::min(length + 1, given.size()));
    if (library == keptLibrary) {
      isInFront = false;
    } else if (!isInFront || !isSanitizerRuntime(library)) {
      list.add(library);
    }
  }
}

std::string_view givenLibraries(char* const* variables) noexcept {
  const char* const entry = find(variables, kPreloadName);
  return entry != nullptr ? entry + kPreloadName.size() : "";
}

/// Whether the variables are those of another run within this one: its library stands before ours.
bool isOfRunWithin(char* const* variables) noexcept {
  const std::string_view own(keptLibrary);
  std::string_view name = own;
  name.remove_prefix(own.rfind('/') + 1);
  const std::string_view given = givenLibraries(variables);
  const std::size_t first = given.find(name);
  return first != std::string_view::npos && first != given.find(own) + own.size() - name.size();
}

/// Whether a child is given what was kept, whatever it was to be given.
bool replaces(const KeptVariable& kept, char* const* variables) noexcept {
  const char* const given = find(variables, kept.name);
  return kept.text[0] != '\0' && (given == nullptr || (kept.isOurs && !isOfRunWithin(variables)) ||
                                  std::strlen(given) >= sizeof kept.text);
}

}  // namespace

void keepEnvironment(const char* library) noexcept {
  if (std::strlen(library) >= sizeof keptLibrary) {
    endProcess("the path of the library is too long");
  }
  std::strcpy(keptLibrary, library);
  for (KeptVariable& kept : keptVariables) {
    const char* const variable = find(environ, kept.name);
    if (variable == nullptr) {
      continue;
    }
    if (std::strlen(variable) >= sizeof kept.text) {
      endProcess("a variable of orb-sim is too long");
    }
    std::strcpy(kept.text, variable);
  }
  makePreload(ownPreload, "", givenLibraries(environ));
  for (char** variable = environ; *variable != nullptr; ++variable) {
    if (beginsWith(*variable, kPreloadName)) {
      *variable = ownPreload.text;
    }
  }
}

bool isComplete(char* const* variables) noexcept {
  for (const KeptVariable& kept : keptVariables) {
    const char* const given = find(variables, kept.name);
    if (replaces(kept, variables) && (given == nullptr || std::strcmp(given, kept.text) != 0)) {
      return false;
    }
  }
  return givenLibraries(variables).find(keptLibrary) != std::string_view::npos;
}

std::size_t completeSize(char* const* given) noexcept {
  std::size_t size = std::size(keptVariables) + 2;  // LD_PRELOAD and the null at the end
  while (given != nullptr && *given != nullptr) {
    ++given;
    ++size;
  }
  return size;
}

void completeEnvironment(const char* program, char* const* given, PreloadEntry& entry,
                         const char** out) noexcept {
  const ProgramFile file = inspectProgram(program);
  // Valgrind's tools are statically linked, and load a program with its LD_PRELOAD themselves.
  const bool isValgrind = find(given, "VALGRIND_LAUNCHER=") != nullptr;
  if (file.obstacle != nullptr && !isValgrind) {
    say({program, " ", file.obstacle, ": it does not see the simulated device"});
  }
  makePreload(entry, file.runtimes, givenLibraries(given));
  *out++ = entry.text;
  for (const KeptVariable& kept : keptVariables) {
    if (replaces(kept, given)) {
      *out++ = kept.text;
    }
  }
  for (char* const* variable = given; variable != nullptr && *variable != nullptr; ++variable) {
    const bool isReplaced =
        std::any_of(std::begin(keptVariables), std::end(keptVariables), [&](const auto& kept) {
          return beginsWith(*variable, kept.name) && replaces(kept, given);
        });
    if (!isReplaced && !beginsWith(*variable, kPreloadName)) {
      *out++ = *variable;
    }
  }
  *out = nullptr;
}

}  // namespace orb::sim
