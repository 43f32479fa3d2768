// A C++ program as a user of 2.1.6 compiled it: the enumerations by value, the handle as a class,
// and an exception of the library's own type that stays inside. It keeps running against every
// later library of SOVERSION 2.

#include <jtpdf/jtpdf.h>

#include <cerrno>
#include <cstdio>
#include <memory>
#include <string>

namespace {

struct Destroy {
  void operator()(JTPDFDocument* doc) const { DestroyPdfDoc(doc); }
};
using Handle = std::unique_ptr<JTPDFDocument, Destroy>;

int failures = 0;

void Expect(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "host: not so: %s\n", what);
  ++failures;
}

std::string Written(TPdfColorSpace space, TPdfCompression compression, TPdfImageRole role) {
  const Handle doc(CreateMemoryPdfDoc(PDFCoordinateUnitMillimeter));
  Expect(InitPdfDoc(doc.get()) == 0, "InitPdfDoc");
  const TPdfImageDescriptor image = {"\0x", 2, compression, 7, 8, 1, space, 0};
  int number = 0;
  Expect(WritePdfImage(doc.get(), &image, true, role, nullptr, 0, nullptr, &number) == 0, "image");
  Expect(number == 2, "the first number");
  Expect(FinalizePdfDoc(doc.get(), nullptr) == 0, "FinalizePdfDoc");
  return {GetPdfData(doc.get()), GetPdfDataSize(doc.get())};
}

bool Holds(const std::string& bytes, const std::string& text) {
  return bytes.find(text) != std::string::npos;
}

}  // namespace

int main() {
  const std::string gray = Written(kPdfColorSpaceGray, kPdfCompressionJPEG, kPdfImageRolePhoto);
  Expect(Holds(gray, "/ColorSpace /DeviceGray\r\n/Filter /DCTDecode\r\n"), "a grey JPEG image");
  Expect(Holds(gray, "/JTImageType /Photo\r\n/Mask [255 255]\r\n"), "its role and mask");
  const std::string rgb = Written(kPdfColorSpaceRGB, kPdfCompressionLZW, kPdfImageRoleBorder);
  Expect(Holds(rgb, "/ColorSpace /DeviceRGB\r\n/Filter /LZWDecode\r\n"), "an RGB LZW image");
  Expect(Holds(rgb, "/JTImageType /Border\r\n"), "its role");
  Expect(Holds(rgb, std::string("stream\r\n\0xendstream\r\n", 21)), "its data, a NUL included");
  const std::string odd = Written(static_cast<TPdfColorSpace>(77), static_cast<TPdfCompression>(-1),
                                  static_cast<TPdfImageRole>(9));
  Expect(!Holds(odd, "/ColorSpace") && !Holds(odd, "/Filter"), "values that mean nothing");

  const Handle nowhere(CreateFilePdfDoc(1.0, L"/nonexistent/folder/file.pdf", nullptr, nullptr));
  errno = 0;
  Expect(InitPdfDoc(nowhere.get()) == ENOENT, "a failure is a code and no exception");
  return failures == 0 ? 0 : 1;
}
