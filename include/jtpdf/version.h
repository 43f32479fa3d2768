/* version.h - which version of the library these headers are of. */
#ifndef JTPDF_VERSION_H
#define JTPDF_VERSION_H

#define JTPDF_VERSION_MAJOR 2
#define JTPDF_VERSION_MINOR 1
#define JTPDF_VERSION_PATCH 6
#define JTPDF_VERSION_STRING "2.1.6"

/* One number to compare: 20106 for 2.1.6. */
#define JTPDF_VERSION \
  (JTPDF_VERSION_MAJOR * 10000 + JTPDF_VERSION_MINOR * 100 + JTPDF_VERSION_PATCH)

#endif /* JTPDF_VERSION_H */
