// Image XObjects (ISO 32000-1, 8.9.5), their data written as the caller encoded it:
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

#include "document/document.h"
#include "objects/diagnostic_note.h"
#include "objects/text_string.h"
#include "objects/value_format.h"

namespace {

struct ColorSpaceEntries {
  std::string colorSpace;  // empty: no /ColorSpace
  std::string whiteMask;   // empty: no /Mask
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

}  // namespace

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

int JTPDFDocument::WriteImage(char const* data, unsigned long size, TPdfColorSpace colorSpace,
                              int colorSpaceObject, TPdfCompression compression, bool maskWhite,
                              int width, int height, int bitsPerComponent, TPdfImageRole role,
                              std::wstring const& name, unsigned int itemCount,
                              JTPDFDictionaryItem const* items, int softMask) {
  const bool isJPEG2000 = compression == kPdfCompressionJPEG2000;
  if (isJPEG2000 && softMask != kNoSoftMask) {
    Refuse("When using JPEG2000 no separate alpha channel is allowed");
  }

  // Entries of the caller's table survive wherever none of ours takes their place.
  JTPDFDict dict(itemCount, items);
  dict["/Type"] = "/XObject";
  dict["/Subtype"] = "/Image";
  dict["/BitsPerComponent"] = IntToStr(bitsPerComponent, 0);
  dict["/JTImageType"] = "/" + GetImageRoleName(role);
  dict["/JTImageName"] = PsString(name);
  dict["/Intent"] = "/RelativeColorimetric";
  const std::string filter = FilterValueFromCompression(compression);
  if (!filter.empty()) dict["/Filter"] = filter;
  dict["/Width"] = IntToStr(width, 0);
  dict["/Height"] = IntToStr(height, 0);
  if (isJPEG2000) {
    dict["/SMaskInData"] = "1";  // the data brings its colour space and any alpha along
  } else {
    const ColorSpaceEntries entries = EntriesForColorSpace(colorSpace, colorSpaceObject);
    // CMYK is always declared inverted (kept): JPEG files with an Adobe marker are.
    if (colorSpace == kPdfColorSpaceCMYK) dict["/Decode"] = "[1 0 1 0 1 0 1 0]";
    if (!entries.colorSpace.empty()) dict["/ColorSpace"] = entries.colorSpace;
    if (maskWhite && !entries.whiteMask.empty()) dict["/Mask"] = entries.whiteMask;
  }
  if (softMask != kNoSoftMask) dict["/SMask"] = AsRefString(softMask);

  const std::string body = dict.AsString();
  const int number = BeginObject();
  WriteLn("<<");
  WriteLn(body);
  BeginStream(size);
  WriteRaw(data, size);
  WriteLn("endstream");  // kept: directly behind the data, without a line end between
  EndObject();
  return number;
}
