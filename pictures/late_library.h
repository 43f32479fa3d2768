// late_library.h - a shared library of others that is loaded when its first picture comes. Loading
// those of HEIF and JPEG XL takes longer than storing most pictures.
#ifndef JTPDF_PICTURES_LATE_LIBRARY_H
#define JTPDF_PICTURES_LATE_LIBRARY_H

namespace pictures {

// Stays loaded for good: it may have threads, and cleans up at the end of the process.
class LateLibrary {
 public:
  // `name` is that by which the system finds it, "libheif.so.1". Throws an ImageError where it does
  // not, or where a function is missing: the picture cannot be read on this machine.
  explicit LateLibrary(const char* name);

  template <typename Function>
  Function* Find(const char* function) const {
    return reinterpret_cast<Function*>(Address(function));
  }

 private:
  void* Address(const char* function) const;

  const char* name_;
  void* handle_;
};

}  // namespace pictures

// NOLINTBEGIN(bugprone-macro-parentheses): they declare
// A member of a class with a LateLibrary called `library`, which is called as the function is.
#define JTPDF_LATE_FUNCTION(name) decltype(::name)* name = library.Find<decltype(::name)>(#name)
// The same where the build could not tell the library's name, and it is linked.
#define JTPDF_LINKED_FUNCTION(name) decltype(::name)* name = ::name
// NOLINTEND(bugprone-macro-parentheses)

#endif  // JTPDF_PICTURES_LATE_LIBRARY_H
