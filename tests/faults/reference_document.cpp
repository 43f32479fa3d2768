#include "reference_document.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <exception>
#include <new>

namespace faults {

namespace {

constexpr JTPDFRect kSheet = {0, 0, 210, 297, 0};
constexpr JTPDFRect kTurned = {20, 40, 80, 60, 30};
constexpr JTPDFRGBColor kRed = {200, 30, 30, 255};
constexpr JTPDFRGBColor kBlue = {20, 60, 180, 255};

// Not a code that any fault sets: a call that reports it reports what was there before.
constexpr int kCallersErrno = EDOM;

thread_local bool gInsideCall = false;

// Noise that the documents carry as the data of images. The library reads no data.
const std::array<char, 6000>& Noise() {
  static const std::array<char, 6000> noise = [] {
    std::array<char, 6000> bytes{};
    std::uint32_t state = 12345;
    for (char& byte : bytes) {
      state = state * 1664525 + 1013904223;
      byte = static_cast<char>(state >> 24);
    }
    return bytes;
  }();
  return noise;
}

TPdfImageDescriptor Image(std::uint32_t size, TPdfCompression compression,
                          TPdfColorSpace colorSpace, int colorSpaceObject = 0) {
  return {Noise().data(), size, compression, 20, 10, 8, colorSpace, colorSpaceObject};
}

// Encodes to the first half of what there is, which is enough for a reader of lengths.
std::int32_t KeepHalf(void*, const char* data, std::size_t size, const char** encoded,
                      std::size_t* encodedSize) {
  *encoded = data;
  *encodedSize = size / 2;
  return 0;
}

std::int32_t Succeeded() {
  return 0;
}

}  // namespace

namespace {

// What objects.h adds: an object of each kind, entries of every place, bookmarks.
std::vector<Step> OpenSteps(int volume) {
  return {
      {"SetPdfContentEncoder",
       [](Session& s) { return SetPdfContentEncoder(s.doc, "/Prefix", KeepHalf, nullptr); }},
      {"SetPdfCanvasEntry",
       [](Session& s) {
         return SetPdfCanvasEntry(s.doc, "/Resources/Font/F1", "<< /Type /Font >>");
       }},
      {"DrawPdfContent",
       [](Session& s) {
         DrawPdfContent(s.doc, "BT /F1 12 Tf (text that a font sets, long enough) Tj ET");
         return Succeeded();
       }},
      {"WritePdfCanvas", [](Session& s) { return WritePdfCanvas(s.doc, &s.form); }, &Session::form},
      {"SetPdfContentEncoder",
       [](Session& s) { return SetPdfContentEncoder(s.doc, nullptr, nullptr, nullptr); }},
      {"ReservePdfObject", [](Session& s) { return ReservePdfObject(s.doc, &s.reserved); },
       &Session::reserved},
      {"WritePdfObject",
       [](Session& s) { return WritePdfObject(s.doc, "[ 1 2 (three) << /Four 4 >> ]", &s.object); },
       &Session::object, volume},
      {"WritePdfStream",
       [](Session& s) {
         const JTPDFEntry entries[] = {{"/Kind/Of", "(a stream with some text about it)"},
                                       {"/Kind/Number", "4"}};
         return WritePdfStream(s.doc, 2, entries, Noise().data(), 900, &s.object);
       },
       &Session::object, volume},
      {"WritePdfStreamPieces",
       [](Session& s) {
         const JTPDFPiece pieces[] = {{Noise().data(), 100}, {nullptr, 0}, {Noise().data(), 3000}};
         return WritePdfStreamPieces(s.doc, 0, nullptr, 3, pieces, &s.object);
       },
       &Session::object},
      {"WriteReservedPdfObject",
       [](Session& s) { return WriteReservedPdfObject(s.doc, s.reserved, "null"); }},
      {"ReservePdfObject", [](Session& s) { return ReservePdfObject(s.doc, &s.secondReserved); },
       &Session::secondReserved},
      {"WriteReservedPdfStream",
       [](Session& s) {
         const JTPDFEntry entry = {"/A/B/C", "<< /D [ /E ] >>"};
         const JTPDFPiece piece = {Noise().data(), 10};
         return WriteReservedPdfStream(s.doc, s.secondReserved, 1, &entry, 1, &piece);
       }},
      {"SetPdfPageEntry", [](Session& s) { return SetPdfPageEntry(s.doc, "/Rotate", "90"); }},
      {"SetPdfCatalogEntry",
       [](Session& s) { return SetPdfCatalogEntry(s.doc, "/PageLayout", "/TwoColumnLeft"); }},
      {"AddPdfBookmark",
       [](Session& s) { return AddPdfBookmark(s.doc, 0, L"a bookmark with a long title", 0); }},
      {"AddPdfBookmark", [](Session& s) { return AddPdfBookmark(s.doc, 1, L"another", 2); }},
      {"SetPdfOpenPage", [](Session& s) { return SetPdfOpenPage(s.doc, 2, "/FitH null"); }},
  };
}

}  // namespace

std::vector<Step> ReferenceSteps(int volume, bool openObjects) {
  std::vector<Step> steps = {
      {"SetPdfInfoItem",
       [](Session& s) {
         SetPdfInfoItem(s.doc, "Title", L"Writes fail, \u03B1\u03B2\u03B3 and \U0001F600 stay");
         return Succeeded();
       }},
      {"JTPDFGetVersion",
       [](Session&) { return JTPDFGetVersion() == nullptr ? EFAULT : Succeeded(); }},
      {"InitPdfDoc", [](Session& s) { return InitPdfDoc(s.doc); }},
      {"WritePdfICCProfile",
       [](Session& s) {
         return WritePdfICCProfile(s.doc, Noise().data(), 700, kPdfCompressionFlate, &s.colorSpace);
       },
       &Session::colorSpace},
      {"WritePdfImage",
       [](Session& s) {
         const auto image = Image(6000, kPdfCompressionJPEG, kPdfColorSpaceRGB);
         const JTPDFDictionaryItem items[] = {{"Source", L"a scanner with a rather long name"},
                                              {"/Place/Drawer", L"third"},
                                              {"/Place/Room", L"cellar"}};
         return WritePdfImage(s.doc, &image, false, kPdfImageRolePhoto, L"noise, and more noise", 3,
                              items, &s.image);
       },
       &Session::image, volume},
      {"WritePdfImage",
       [](Session& s) {
         const auto image = Image(200, kPdfCompressionFlate, kPdfColorSpaceCMYK);
         return WritePdfImage(s.doc, &image, true, kPdfImageRoleClipArt, nullptr, 0, nullptr,
                              &s.masked);
       },
       &Session::masked, volume},
      {"WritePdfImage",
       [](Session& s) {
         const auto image =
             Image(600, static_cast<TPdfCompression>(9), kPdfColorSpaceICC, s.colorSpace);
         return WritePdfImage(s.doc, &image, true, kPdfImageRoleOther, L"", 0, nullptr,
                              &s.calibrated);
       },
       &Session::calibrated},
      {"WritePdfImageWithAlpha",
       [](Session& s) {
         const auto image = Image(3000, kPdfCompressionLZW, kPdfColorSpaceRGB);
         const auto alpha = Image(1000, kPdfCompressionFlate, kPdfColorSpaceGray);
         return WritePdfImageWithAlpha(s.doc, &image, &alpha, kPdfImageRoleBorder, L"seen through",
                                       0, nullptr, &s.translucent);
       },
       &Session::translucent, volume},
      {"WritePdfImageJPEG2000",
       [](Session& s) {
         const auto image = Image(2500, kPdfCompressionJPEG2000, kPdfColorSpaceGray);
         return WritePdfImageJPEG2000(s.doc, &image, kPdfImageRoleBackground, L"ground", 0, nullptr,
                                      &s.jpeg2000);
       },
       &Session::jpeg2000},
      {"FillPdfRectangle",
       [](Session& s) {
         FillPdfRectangle(s.doc, kTurned, kRed);
         return Succeeded();
       }},
      {"ClearPdfCanvas",
       [](Session& s) {
         ClearPdfCanvas(s.doc);
         return Succeeded();
       }},
      {"SetPdfCanvasBoundingBox",
       [](Session& s) {
         SetPdfCanvasBoundingBox(s.doc, kSheet);
         return Succeeded();
       }},
      {"DrawPdfImage",
       [](Session& s) {
         DrawPdfImage(s.doc, s.jpeg2000);
         return Succeeded();
       }},
      {"DrawPdfImageInRect",
       [](Session& s) {
         DrawPdfImageInRect(s.doc, s.image, kTurned);
         return Succeeded();
       }},
      {"DrawPdfImageInRect",
       [](Session& s) {
         DrawPdfImageInRect(s.doc, s.masked, kTurned);
         return Succeeded();
       }},
      {"DrawPdfImageInRect",
       [](Session& s) {
         DrawPdfImageInRect(s.doc, s.calibrated, kTurned);
         return Succeeded();
       }},
      {"FillPdfRectangle",
       [](Session& s) {
         FillPdfRectangle(s.doc, kTurned, kRed);
         return Succeeded();
       }},
      {"FillPdfRectangle",  // an inch by a centimetre, a point from the corner
       [](Session& s) {
         const double unit = PDFCoordinateUnitMillimeter;
         const double point = PDFCoordinateUnitPoint / unit;
         const JTPDFRect box = {point, point, PDFCoordinateUnitInch / unit,
                                PDFCoordinateUnitCentimeter / unit, 0};
         FillPdfRectangle(s.doc, box, kRed);
         return Succeeded();
       }},
      {"InsetPdfRect",
       [](Session& s) {
         JTPDFRect inner = GetPdfCanvasBoundingBox(s.doc);
         InsetPdfRect(&inner, 10, 20);
         StrokePdfRectangle(s.doc, inner, kBlue, 0.5);
         return Succeeded();
       }},
      {"FillAndStrokePdfRectangle",
       [](Session& s) {
         FillAndStrokePdfRectangle(s.doc, kTurned, kBlue, kRed, 2);
         return Succeeded();
       },
       nullptr, 4 * volume},
      {"FillAndStrokePdfCircle",
       [](Session& s) {
         FillAndStrokePdfCircle(s.doc, kTurned, kRed, kBlue, 1);
         return Succeeded();
       },
       nullptr, 4 * volume},
      {"WritePdfCanvas", [](Session& s) { return WritePdfCanvas(s.doc, &s.form); }, &Session::form},
      {"DrawPdfImage",
       [](Session& s) {
         DrawPdfImage(s.doc, s.translucent);
         return Succeeded();
       }},
      {"WritePdfCanvas", [](Session& s) { return WritePdfCanvas(s.doc, &s.secondForm); },
       &Session::secondForm},
      {"WritePdfPage", [](Session& s) { return WritePdfPage(s.doc, s.form, kSheet, kSheet); },
       nullptr, 10 + volume},
      {"WritePdfPage",
       [](Session& s) { return WritePdfPage(s.doc, s.secondForm, kTurned, kSheet); }},
      {"SetPdfMgMk",
       [](Session& s) {
         SetPdfMgMk(s.doc, !GetPdfMgMk(s.doc));
         return Succeeded();
       }},
      {"SetPdfInfoItem",
       [](Session& s) {
         SetPdfInfoItem(s.doc, "/Subject", L"an item that is set after the pages");
         return Succeeded();
       }},
      {"FinalizePdfDoc", [](Session& s) { return FinalizePdfDoc(s.doc, nullptr); }},
  };
  if (openObjects) {
    const std::vector<Step> open = OpenSteps(volume);
    const auto pages = std::find_if(steps.begin(), steps.end(), [](const Step& step) {
      return std::strcmp(step.name, "WritePdfPage") == 0;
    });
    steps.insert(pages, open.begin(), open.end());
  }
  return steps;
}

namespace {

class Run {
 public:
  explicit Run(const Options& options) : options_(options) {}

  Outcome Steps() {
    if (JTPDFGetDiagnosticMode() != options_.diagnostics) {
      JTPDFSetDiagnosticMode(options_.diagnostics);  // no thread writes what is so already
    }
    Guarded("Create...PdfDoc", [&] {
      session_.doc = Create();
      return session_.doc == nullptr ? errno : Succeeded();
    });
    outcome_.created = session_.doc != nullptr;
    if (!outcome_.created) return std::move(outcome_);
    SetPdfMemoryErrors(session_.doc, options_.memoryErrors);
    RunSteps();
    // A host that does not believe the code.
    if (options_.after != After::kAbandon && !outcome_.failures.empty()) {
      const Step again = {"FinalizePdfDoc",
                          [](Session& s) { return FinalizePdfDoc(s.doc, nullptr); }};
      for (int i = 0; i < 2; ++i) Take(again);
    }
    KeepData();
    DestroyPdfDoc(session_.doc);
    return std::move(outcome_);
  }

 private:
  JTPDFDocument* Create() const {
    constexpr wchar_t kCreator[] = L"the host of the reference document";
    constexpr wchar_t kAuthor[] = L"its author";
    const double unit = PDFCoordinateUnitMillimeter;
    const bool codes = options_.memoryErrors;
    if (options_.create) return options_.create();
    if (options_.write != nullptr) {
      return codes ? TryCreateCallbackPdfDoc(unit, options_.write, options_.context)
                   : CreateCallbackPdfDoc(unit, options_.write, options_.context);
    }
    if (!options_.path) return codes ? TryCreateMemoryPdfDoc(unit) : CreateMemoryPdfDoc(unit);
    return codes ? TryCreateFilePdfDoc(unit, fileName_.c_str(), kCreator, kAuthor)
                 : CreateFilePdfDoc(unit, fileName_.c_str(), kCreator, kAuthor);
  }

  void RunSteps() {
    for (const Step& step : ReferenceSteps(options_.volume, options_.openObjects)) {
      const bool finalizes = std::string(step.name) == "FinalizePdfDoc";
      if (finalizes && options_.after == After::kAbandon) return;
      for (int i = 0; i < step.times; ++i) {
        if (options_.beforeStep) options_.beforeStep(step);
        bool done = Take(step);
        if (!done && options_.after == After::kRetry) done = Take(step);
        if (!done && (options_.after == After::kStop || options_.after == After::kAbandon)) return;
      }
    }
  }

  bool Take(const Step& step) {
    const int before = step.out == nullptr ? 0 : session_.*step.out;
    const bool done = Guarded(step.name, [&] { return step.call(session_); });
    if (!done && step.out != nullptr && session_.*step.out != before) {
      Blame(step.name, "failed and wrote its out-parameter");
    }
    if (done && std::string(step.name) == "FinalizePdfDoc") outcome_.finalized = true;
    return done;
  }

  template <typename Call>
  bool Guarded(const char* name, const Call& call) {
    const char* exception = nullptr;
    std::int32_t code = 0;
    errno = kCallersErrno;
    gInsideCall = true;
    try {
      code = call();
    } catch (const std::bad_alloc&) {
      exception = "std::bad_alloc";
    } catch (const std::exception&) {
      exception = "another exception";
    }
    gInsideCall = false;
    const int error = errno;
    if (exception == nullptr && code == 0) {
      if (error != kCallersErrno) Blame(name, "succeeded and changed errno");
      return true;
    }
    if (exception == nullptr && code != -1 && code != error) {
      Blame(name, "returned a code that is not errno");
    }
    outcome_.failures.push_back({name, code, exception == nullptr ? "" : exception});
    return false;
  }

  // What GetPdfData gives has to agree with what FinalizePdfDoc said.
  void KeepData() {
    const char* data = GetPdfData(session_.doc);
    const std::size_t size = GetPdfDataSize(session_.doc);
    const bool inMemory = !options_.path && !options_.create && options_.write == nullptr;
    const bool expected = inMemory && outcome_.finalized;
    if ((data != nullptr) != expected) Blame("GetPdfData", "gives data against the codes");
    if (data == nullptr && size != 0) Blame("GetPdfDataSize", "counts what is not there");
    if (data != nullptr) outcome_.memory.assign(data, size);
  }

  void Blame(const char* name, const char* deed) {
    if (outcome_.misbehavior.empty()) outcome_.misbehavior = std::string(name) + ' ' + deed;
  }

  const Options& options_;
  const std::wstring fileName_ = options_.path ? options_.path->wstring() : std::wstring();
  Session session_;
  Outcome outcome_;
};

}  // namespace

Outcome RunReference(const Options& options) {
  return Run(options).Steps();
}

bool InsideCall() {
  return gInsideCall;
}

}  // namespace faults
