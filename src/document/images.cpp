// Image XObjects, their data written as the caller encoded it:
//
//     5 0 obj
//     <<
//     /BitsPerComponent 8
//     /ColorSpace /DeviceGray
//     /Filter /DCTDecode
//     ...
//     /Length 13007
//     >>
//     stream
//     ...13007 bytes...endstream
//     endobj

#include "document/images.h"

#include <array>
#include <string_view>

#include "objects/diagnostic_note.h"
#include "objects/dict.h"
#include "objects/text_string.h"
#include "objects/value_format.h"

std::string FilterValueFromCompression(TPdfCompression compression) {
  switch (compression) {
    case kPdfCompressionJPEG:
      return "/DCTDecode";
    case kPdfCompressionLZW:
      return "/LZWDecode";
    case kPdfCompressionFlate:
      return "/FlateDecode";
    case kPdfCompressionJPEG2000:
      return "/JPXDecode";
  }
  PrintDiagnosticNote("Invalid compression type " + IntToStr(static_cast<int>(compression), 0));
  return std::string();
}

std::string GetImageRoleName(TPdfImageRole role) {
  switch (role) {
    case kPdfImageRoleBackground:
      return "Background";
    case kPdfImageRolePhoto:
      return "Photo";
    case kPdfImageRoleMask:
      return "Mask";
    case kPdfImageRoleBorder:
      return "Border";
    case kPdfImageRoleClipArt:
      return "ClipArt";
    case kPdfImageRoleAlpha:
      return "Alpha";
    case kPdfImageRoleText:
      return "Text";
    case kPdfImageRoleShape:
      return "Shape";
    case kPdfImageRoleOther:
      return "Other";
  }
  return std::string();
}

namespace {

struct ColorSpaceEntries {
  std::string colorSpace;      // empty: no /ColorSpace
  std::string_view whiteMask;  // empty: no /Mask
};

ColorSpaceEntries EntriesForColorSpace(TPdfColorSpace colorSpace, int colorSpaceObject) {
  switch (colorSpace) {
    case kPdfColorSpaceGray:
      return {"/DeviceGray", "[255 255]"};
    case kPdfColorSpaceRGB:
      return {"/DeviceRGB", "[255 255 255 255 255 255]"};
    case kPdfColorSpaceCMYK:
      return {"/DeviceCMYK", "[255 255 255 255 255 255 255 255]"};
    case kPdfColorSpaceICC:
      // Three components, whatever the profile holds: only RGB profiles are provided for.
      return {AsRefString(colorSpaceObject), "[255 255 255 255 255 255]"};
  }
  PrintDiagnosticNote("Invalid color space " + IntToStr(static_cast<int>(colorSpace), 0));
  return {};
}

// The entries of an image's dictionary, in the order of their keys.
class ImageEntries {
 public:
  ImageEntries(const TPdfImageDescriptor& image, bool maskWhite, TPdfImageRole role,
               const wchar_t* name, int softMask)
      : name_(PsString(TextOrEmpty(name))),
        filter_(FilterValueFromCompression(image.compression)),
        role_("/" + GetImageRoleName(role)) {
    const bool isJPEG2000 = image.compression == kPdfCompressionJPEG2000;
    // JPEG 2000 data brings its colour space and any alpha along.
    if (!isJPEG2000) color_ = EntriesForColorSpace(image.colorSpace, image.colorSpaceObject);
    // CMYK is always declared inverted (kept): JPEG files with an Adobe marker are.
    const bool isInverted = !isJPEG2000 && image.colorSpace == kPdfColorSpaceCMYK;

    Add("/BitsPerComponent", Number(image.bitsPerComponent));
    Add("/ColorSpace", color_.colorSpace);
    Add("/Decode", isInverted ? "[1 0 1 0 1 0 1 0]" : "");
    Add("/Filter", filter_);
    Add("/Height", Number(image.height));
    Add("/Intent", "/RelativeColorimetric");
    Add("/JTImageName", name_);
    Add("/JTImageType", role_);
    Add("/Mask", maskWhite ? color_.whiteMask : "");
    Add("/SMask", softMask == kNoSoftMask ? "" : Number(softMask, " 0 R"));
    Add("/SMaskInData", isJPEG2000 ? "1" : "");
    Add("/Subtype", "/Image");
    Add("/Type", "/XObject");
    Add("/Width", Number(image.width));
  }

  void WriteTo(ObjectWriter& out) const {
    for (std::size_t i = 0; i < count_; ++i) {
      out.Compose() << entries_[i].key << ' ';
      out.Append(entries_[i].value);
      out.Compose() << "\r\n";
    }
  }

  void SetIn(JTPDFDict& dict) const {
    for (std::size_t i = 0; i < count_; ++i) {
      dict[std::string(entries_[i].key)] = entries_[i].value;
    }
  }

 private:
  struct Entry {
    std::string_view key;
    std::string_view value;
  };

  // An empty value leaves the entry out.
  void Add(std::string_view key, std::string_view value) {
    if (!value.empty()) entries_[count_++] = {key, value};
  }

  std::string_view Number(int value, std::string_view behind = "") {
    const std::size_t start = numbers_.Size();
    numbers_ << value << behind;
    return std::string_view(numbers_).substr(start);
  }

  std::string name_;
  std::string filter_;
  std::string role_;
  ColorSpaceEntries color_;
  TextBuffer<256> numbers_;
  std::array<Entry, 14> entries_;
  std::size_t count_ = 0;
};

}  // namespace

int WriteImage(ObjectWriter& out, const TPdfImageDescriptor& image, bool maskWhite,
               TPdfImageRole role, const wchar_t* name, unsigned int itemCount,
               const JTPDFDictionaryItem* items, int softMask) {
  if (image.compression == kPdfCompressionJPEG2000 && softMask != kNoSoftMask) {
    Refuse("When using JPEG2000 no separate alpha channel is allowed");
  }
  // Entries of the caller's table survive wherever none of ours takes their place.
  JTPDFDict dict(itemCount, items);
  const ImageEntries entries(image, maskWhite, role, name, softMask);
  std::string body;
  if (itemCount != 0) {
    entries.SetIn(dict);
    body = dict.AsString();
  }

  const int number = out.BeginObject();
  out.Compose() << "<<\r\n";
  if (itemCount != 0) {
    out.Append(body);
    out.Compose() << "\r\n";
  } else {
    entries.WriteTo(out);
  }
  out.BeginStream(image.size);
  out.WriteRaw(image.data, image.size);
  out.Compose() << "endstream\r\n";  // kept: directly behind the data, without a line end between
  out.EndObject();
  return number;
}
