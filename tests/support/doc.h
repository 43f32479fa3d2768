// doc - the vocabulary of the tests, over the public interface:
//
//     const std::string bytes = Doc().Init().Image(grey).Draw(2).Form().Page(3).Finish();
#ifndef JTPDF_TESTS_SUPPORT_DOC_H
#define JTPDF_TESTS_SUPPORT_DOC_H

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "jtpdf/jtpdf.h"

inline constexpr JTPDFRect kA4 = {0, 0, 595, 842, 0};
inline constexpr JTPDFRGBColor kRed = {255, 0, 0, 255};
inline constexpr JTPDFRGBColor kBlue = {0, 0, 255, 255};
inline constexpr JTPDFRGBColor kNone = {255, 255, 255, 0};

// A picture of 640 by 480 pixels with 8 bits per component; data must outlive it.
TPdfImageDescriptor Picture(std::string_view data, TPdfColorSpace colorSpace = kPdfColorSpaceGray,
                            TPdfCompression compression = kPdfCompressionJPEG,
                            int colorSpaceObject = 0);

// A grey picture with a few bytes of data.
extern const TPdfImageDescriptor grey;

struct ImageOptions {
  bool maskWhite = false;
  TPdfImageRole role = kPdfImageRolePhoto;
  const wchar_t* name = L"scan";
  std::vector<JTPDFDictionaryItem> items = {};
};

// A document that expects each call to succeed and to leave errno alone. last is the number that
// the call before gave out.
class Doc {
 public:
  // In memory.
  explicit Doc(double unitFactor = PDFCoordinateUnitPoint);
  // In a file.
  explicit Doc(std::filesystem::path path, const wchar_t* creator = nullptr,
               const wchar_t* author = nullptr, double unitFactor = PDFCoordinateUnitPoint);
  Doc(Doc&& other) noexcept;
  ~Doc();

  Doc& Init();
  Doc& Info(const char* key, const wchar_t* value);
  Doc& Mark(bool mark);

  Doc& Extent(JTPDFRect box);
  Doc& Clear();
  Doc& Draw(int image);
  Doc& Draw(int image, JTPDFRect box);
  Doc& Fill(JTPDFRect box, JTPDFRGBColor fill);
  Doc& Stroke(JTPDFRect box, JTPDFRGBColor stroke, double lineWidth);
  Doc& FillAndStroke(JTPDFRect box, JTPDFRGBColor fill, JTPDFRGBColor stroke, double lineWidth);
  Doc& Circle(JTPDFRect box, JTPDFRGBColor fill, JTPDFRGBColor stroke, double lineWidth);

  Doc& Image(const TPdfImageDescriptor& image, const ImageOptions& options = {});
  Doc& ImageWithAlpha(const TPdfImageDescriptor& image, const TPdfImageDescriptor* alpha,
                      const ImageOptions& options = {});
  Doc& ImageJPEG2000(const TPdfImageDescriptor& image, const ImageOptions& options = {});
  Doc& Profile(std::string_view data, TPdfCompression compression = kPdfCompressionFlate);
  Doc& Form();
  Doc& Page(int form, JTPDFRect crop = kA4, JTPDFRect media = kA4);
  // A page that shows the object written last.
  Doc& Page() { return Page(last); }

  // Finalises and gives the bytes of the document, of the file or of the memory.
  std::string Finish(const char* closingText = nullptr);

  operator JTPDFDocument*() const { return handle; }
  JTPDFDocument* operator->() const { return handle; }

  int last = 0;

 private:
  template <typename Call>
  void Expect(const char* function, const Call& call);

  JTPDFDocument* handle;
  std::filesystem::path path;  // empty: in memory
};

// The bytes of a finalised memory document; empty if there are none.
std::string BytesOf(JTPDFDocument* doc);

// What every document begins with: the header, the binary marker and object 1.
std::string Head();

#endif  // JTPDF_TESTS_SUPPORT_DOC_H
