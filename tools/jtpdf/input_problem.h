// input_problem.h - why an input cannot be used, kept where it shows and told when there is time.
#ifndef JTPDF_TOOL_INPUT_PROBLEM_H
#define JTPDF_TOOL_INPUT_PROBLEM_H

#include <exception>
#include <new>
#include <string>

#include "image_source.h"

namespace pictures::tool {

// Does the work; what makes the input unusable is given as it was thrown. Workers that ran out of
// memory have none for a message either: Reason makes it when they are done.
template <class Work>
std::exception_ptr ProblemOf(const Work& work) {
  try {
    work();
  } catch (const ImageError&) {
    return std::current_exception();
  } catch (const std::bad_alloc&) {
    return std::current_exception();
  }
  return nullptr;
}

// The text for what ProblemOf gave.
std::string Reason(const std::exception_ptr& problem);

// Works on the bytes of an input. Where it changed meanwhile neither result nor error counts.
template <class Work>
void UseUnchanged(const ImageSource& source, const Work& work) {
  try {
    work();
  } catch (const ImageError&) {
    source.CheckUnchanged();
    throw;
  }
  source.CheckUnchanged();
}

}  // namespace pictures::tool

#endif  // JTPDF_TOOL_INPUT_PROBLEM_H
