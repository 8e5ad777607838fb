// The least that a shared object of C++ can be: one class with a virtual function and a text, made
// by a function that is found by name.

#include <new>
#include <string>

namespace {

class Trivial {
 public:
  Trivial() = default;
  Trivial(const Trivial&) = delete;
  Trivial& operator=(const Trivial&) = delete;
  virtual ~Trivial() = default;
  virtual const std::string& name() const { return name_; }

 private:
  std::string name_ = "a text that is too long to be stored in the object";
};

}  // namespace

extern "C" void constructTrivial(void* place) { new (place) Trivial; }
