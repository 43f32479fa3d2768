// writer_api.cpp - pictures as images and pages of a document.
#include <jtpdf/objects.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <memory>
#include <string>

#include "api/guarded.h"
#include "api/picture.h"
#include "flate.h"
#include "image_writer.h"
#include "layout.h"
#include "measures.h"
#include "optimisation.h"

struct JTPDFPictureWriter {
  JTPDFDocument* document;
  double unit;
  int level;
  pictures::ImageWriter images;
};

namespace pictures::api {
namespace {

int WriteImage(JTPDFPictureWriter* writer, const JTPDFPicture* picture, unsigned frame) {
  Require(writer, "writer");
  Require(picture, "picture");
  const ImagePlan& plan = picture->UsableFrame(frame);
  const EncodedImage image = writer->level == JTPDF_PICTURE_SMALLEST
                                 ? EncodeSmallest(plan, picture->bytes, picture->limits)
                                 : Encode(plan, picture->bytes, writer->level);
  int number = 0;
  Check(writer->images.Write(image, {kPdfImageRolePhoto, {}}, &number));
  return number;
}

template <class Parse>
auto Parsed(const char* member, const char* text, const Parse& parse) {
  try {
    return parse(text);
  } catch (const MeasureError& error) {
    RefuseArgument(std::string(member) + ": " + error.what());
  }
}

LayoutOptions OptionsOf(const JTPDFPicturePage* page) {
  LayoutOptions options;
  if (page == nullptr) return options;
  if (page->page != nullptr) options.page = Parsed("page", page->page, ParsePageSize);
  if (page->image != nullptr) options.image = Parsed("image", page->image, ParseImageSize);
  if (page->border != nullptr) options.border = Parsed("border", page->border, ParseBorder);
  constexpr std::array kFits{Fit::kInto, Fit::kFill, Fit::kExact, Fit::kShrink, Fit::kEnlarge};
  if (page->fit < 0 || static_cast<size_t>(page->fit) >= kFits.size()) {
    RefuseArgument("fit: " + std::to_string(page->fit) + " is none of 0 to 4");
  }
  options.fit = kFits[static_cast<size_t>(page->fit)];
  if (page->turn % 90 != 0 || page->turn < 0 || page->turn > 360) {
    RefuseArgument("turn: " + std::to_string(page->turn) + " is none of 0, 90, 180, 270 and 360");
  }
  if (page->turn != 0) options.turn = page->turn % 360;
  options.autoOrient = page->autoOrient;
  return options;
}

JTPDFRect InUnits(const JTPDFRect& box, double unit) {
  return {box.left / unit, box.bottom / unit, box.width / unit, box.height / unit, box.angle};
}

JTPDFPictureLayout LayOutInUnits(const JTPDFPictureWriter* writer, const JTPDFPicture* picture,
                                 unsigned frame, const JTPDFPicturePage* page) {
  Require(writer, "writer");
  Require(picture, "picture");
  const PageLayout layout = LayOut(picture->UsableFrame(frame), OptionsOf(page));
  return {InUnits(layout.page, writer->unit), InUnits(layout.image, writer->unit)};
}

JTPDFRect FitInUnits(const JTPDFPictureWriter* writer, const JTPDFPicture* picture, unsigned frame,
                     const JTPDFRect& box, int32_t fit, int32_t turn) {
  Require(writer, "writer");
  Require(picture, "picture");
  JTPDFPicturePage scaled = {};
  scaled.fit = fit;
  scaled.turn = turn;
  const LayoutOptions options = OptionsOf(&scaled);
  const bool finite = std::isfinite(box.left) && std::isfinite(box.bottom) &&
                      std::isfinite(box.width) && std::isfinite(box.height) &&
                      std::isfinite(box.angle);
  if (!finite || box.width <= 0 || box.height <= 0) {
    RefuseArgument("box: has no room for a picture; its width and height have to be above 0");
  }
  return InUnits(FitIntoBox(picture->UsableFrame(frame), InUnits(box, 1 / writer->unit), options),
                 writer->unit);
}

}  // namespace
}  // namespace pictures::api

extern "C" {

JTPDFPictureWriter* JTPDFCreatePictureWriter(JTPDFDocument* doc, double unitFactor, int level,
                                             JTPDFPictureError* error) {
  std::unique_ptr<JTPDFPictureWriter> writer;
  const int32_t result = pictures::api::Guarded(error, [&] {
    pictures::api::Require(doc, "doc");
    if (!(unitFactor > 0) || !std::isfinite(unitFactor)) {
      pictures::api::RefuseArgument("unitFactor: no length can be that many points");
    }
    if (level < 0 || level > JTPDF_PICTURE_SMALLEST) {
      pictures::api::RefuseArgument("level: " + std::to_string(level) + " is none of 0 to 13");
    }
    const int ofProfiles = std::min(level, pictures::kHardestLevel);
    writer.reset(
        new JTPDFPictureWriter{doc, unitFactor, level, pictures::ImageWriter(doc, ofProfiles)});
  });
  return result == 0 ? writer.release() : nullptr;
}

void JTPDFDestroyPictureWriter(JTPDFPictureWriter* writer) {
  delete writer;
}

int32_t JTPDFWritePicture(JTPDFPictureWriter* writer, const JTPDFPicture* picture, unsigned frame,
                          int* image, JTPDFPictureError* error) {
  return pictures::api::Guarded(error, [&] {
    const int number = pictures::api::WriteImage(writer, picture, frame);
    if (image != nullptr) *image = number;
  });
}

int32_t JTPDFLayOutPicture(const JTPDFPictureWriter* writer, const JTPDFPicture* picture,
                           unsigned frame, const JTPDFPicturePage* page, JTPDFPictureLayout* layout,
                           JTPDFPictureError* error) {
  return pictures::api::Guarded(error, [&] {
    const JTPDFPictureLayout found = pictures::api::LayOutInUnits(writer, picture, frame, page);
    pictures::api::Require(layout, "layout");
    *layout = found;
  });
}

int32_t JTPDFFitPicture(const JTPDFPictureWriter* writer, const JTPDFPicture* picture,
                        unsigned frame, JTPDFRect box, int32_t fit, int32_t turn, JTPDFRect* image,
                        JTPDFPictureError* error) {
  return pictures::api::Guarded(error, [&] {
    const JTPDFRect found = pictures::api::FitInUnits(writer, picture, frame, box, fit, turn);
    pictures::api::Require(image, "image");
    *image = found;
  });
}

JTPDFRect JTPDFUprightPicture(JTPDFRect image) {
  return pictures::UprightBox(image);
}

int32_t JTPDFAddPicturePage(JTPDFPictureWriter* writer, const JTPDFPicture* picture, unsigned frame,
                            const JTPDFPicturePage* page, int* image, JTPDFPictureError* error) {
  return pictures::api::Guarded(error, [&] {
    const JTPDFPictureLayout layout = pictures::api::LayOutInUnits(writer, picture, frame, page);
    const int number = pictures::api::WriteImage(writer, picture, frame);
    SetPdfCanvasBoundingBox(writer->document, layout.page);
    DrawPdfImageInRect(writer->document, number, layout.image);
    int form = 0;
    errno = 0;  // the code of a failure is what stands there
    pictures::api::Check(WritePdfCanvas(writer->document, &form));
    errno = 0;
    pictures::api::Check(WritePdfPage(writer->document, form, layout.page, layout.page));
    if (image != nullptr) *image = number;
  });
}

}  // extern "C"
