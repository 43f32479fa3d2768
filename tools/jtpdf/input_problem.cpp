#include "input_problem.h"

namespace pictures::tool {

std::string Reason(const std::exception_ptr& problem) {
  try {
    std::rethrow_exception(problem);
  } catch (const ImageError& error) {
    return error.what();
  } catch (const std::bad_alloc&) {
    return "needs more memory than there is; scale it down, or try with fewer jobs (-j 1)";
  }
}

}  // namespace pictures::tool
