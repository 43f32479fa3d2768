// Export: which version of the library runs.

#include "jtpdf/version.h"

#include "jtpdf/jtpdf.h"

extern "C" const char* JTPDFGetVersion() {
  return JTPDF_VERSION_STRING;
}
