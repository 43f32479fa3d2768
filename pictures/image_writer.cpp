// Image dictionaries (ISO 32000-1, 8.9.5), for one with a palette over a profile:
//
//     /BitsPerComponent 4
//     /ColorSpace [/Indexed [/ICCBased 3 0 R] 15 <...>]
//     /DecodeParms << /BitsPerComponent 4 /Columns 640 /Predictor 15 >>
//     /Filter /FlateDecode
//     ...
#include "image_writer.h"

#include <jtpdf/objects.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>
#include <vector>

#include "flate.h"
#include "formats/icc.h"

namespace pictures {
namespace {

// Of the profiles that are remembered; one that is forgotten and comes again is written again.
constexpr size_t kMostProfiles = 4 * kMostProfile;

const char* DeviceOf(Colour colour) {
  return colour == Colour::kGrey  ? "/DeviceGray"
         : colour == Colour::kRgb ? "/DeviceRGB"
                                  : "/DeviceCMYK";
}

const char* NameOf(Filter filter) {
  constexpr std::array kNames{"",           "/FlateDecode", "/LZWDecode",
                              "/DCTDecode", "/JPXDecode",   "/CCITTFaxDecode"};
  return kNames[static_cast<size_t>(filter)];
}

const char* NameOf(TPdfImageRole role) {
  constexpr std::array kNames{"/Background", "/Photo", "/Mask",  "/Border", "/ClipArt",
                              "/Alpha",      "/Text",  "/Shape", "/Other"};
  const auto index = static_cast<size_t>(role);
  return index < kNames.size() ? kNames[index] : "/Other";
}

std::string HexString(Bytes bytes) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text = "<";
  for (const uint8_t byte : bytes) text.append({kDigits[byte >> 4], kDigits[byte & 15]});
  return text + '>';
}

// The shorter of a literal and a hexadecimal string; neither has a NUL, which would end the value.
std::string PdfString(Bytes bytes) {
  std::string text = "(";
  for (const uint8_t byte : bytes) {
    if (byte == 0) {
      text += "\\000";
    } else if (byte == '\r') {  // by itself it would be read as a line feed
      text += "\\r";
    } else {
      if (byte == '(' || byte == ')' || byte == '\\') text += '\\';
      text += static_cast<char>(byte);
    }
  }
  text += ')';
  return text.size() <= 2 * bytes.size() + 2 ? text : HexString(bytes);
}

// UTF-16, its high byte first.
std::string TextString(const std::wstring& text) {
  std::vector<uint8_t> bytes{0xFE, 0xFF};
  const auto put = [&](uint32_t unit) {
    bytes.push_back(static_cast<uint8_t>(unit >> 8));
    bytes.push_back(static_cast<uint8_t>(unit));
  };
  for (const wchar_t wide : text) {
    const auto c = static_cast<char32_t>(wide);
    if (c < 0x10000) {
      put(c);
    } else {
      put(0xD800 + ((c - 0x10000) >> 10 & 0x3FF));
      put(0xDC00 + (c & 0x3FF));
    }
  }
  return PdfString(bytes);
}

std::string ArrayOf(const std::vector<int>& numbers) {
  std::string text = "[";
  for (const int number : numbers) {
    if (text.size() > 1) text += ' ';
    text += std::to_string(number);
  }
  return text + ']';
}

std::string ColorSpace(const EncodedStream& stream, int profile) {
  std::string space = DeviceOf(stream.colour);
  if (profile != 0) space = "[/ICCBased " + std::to_string(profile) + " 0 R]";
  if (stream.palette.Empty()) return space;
  const size_t colours = stream.palette.Size() / static_cast<size_t>(Channels(stream.colour));
  return "[/Indexed " + space + ' ' + std::to_string(colours - 1) + ' ' +
         PdfString(stream.palette.View()) + ']';
}

// Entries of a stream's dictionary, whose texts live as long as it.
class Entries {
 public:
  void Add(const char* key, std::string value) { texts_.push_back({key, std::move(value)}); }
  void AddNumber(const char* key, int64_t value) { Add(key, std::to_string(value)); }
  void AddFlag(const char* key, bool value) { Add(key, value ? "true" : "false"); }

  int32_t Write(JTPDFDocument* document, const std::vector<Bytes>& data, int* number) const {
    std::vector<JTPDFEntry> entries;
    for (const auto& [key, value] : texts_) entries.push_back({key, value.c_str()});
    std::vector<JTPDFPiece> pieces;
    pieces.reserve(data.size());
    for (const Bytes piece : data) {
      pieces.push_back({reinterpret_cast<const char*>(piece.data()), piece.size()});
    }
    errno = 0;  // the code of a failure is what stands there
    return WritePdfStreamPieces(document, static_cast<unsigned>(entries.size()), entries.data(),
                                static_cast<unsigned>(pieces.size()), pieces.data(), number);
  }

 private:
  std::vector<std::pair<const char*, std::string>> texts_;
};

void AddPredictor(const EncodedStream& stream, Entries* entries) {
  if (stream.predictor == 1) return;
  entries->AddNumber("/DecodeParms/BitsPerComponent", stream.bits);
  entries->AddNumber("/DecodeParms/Colors", stream.Components());
  entries->AddNumber("/DecodeParms/Columns", stream.width);
  entries->AddNumber("/DecodeParms/Predictor", stream.predictor);
}

void AddCcittParameters(const EncodedStream& stream, Entries* entries) {
  const CcittParameters& ccitt = stream.ccitt;
  entries->AddFlag("/DecodeParms/BlackIs1", ccitt.blackIs1);
  entries->AddNumber("/DecodeParms/Columns", stream.width);
  entries->AddFlag("/DecodeParms/EncodedByteAlign", ccitt.byteAligned);
  entries->AddFlag("/DecodeParms/EndOfBlock", ccitt.endOfBlock);
  entries->AddFlag("/DecodeParms/EndOfLine", ccitt.endOfLine);
  entries->AddNumber("/DecodeParms/K", ccitt.k);
  entries->AddNumber("/DecodeParms/Rows", stream.height);
}

void AddEncoding(const EncodedStream& stream, Entries* entries) {
  if (stream.filter == Filter::kNone) return;
  entries->Add("/Filter", NameOf(stream.filter));
  if (stream.filter == Filter::kFlate || stream.filter == Filter::kLzw) {
    AddPredictor(stream, entries);
  } else if (stream.filter == Filter::kCcitt) {
    AddCcittParameters(stream, entries);
  }
}

void AddColours(const EncodedStream& stream, int profile, Entries* entries) {
  entries->AddNumber("/BitsPerComponent", stream.bits);
  if (stream.filter == Filter::kJpx) {  // brings its colour space, and any alpha, along
    entries->AddNumber("/SMaskInData", 1);
    return;
  }
  entries->Add("/ColorSpace", ColorSpace(stream, profile));
  if (!stream.decode.empty()) entries->Add("/Decode", ArrayOf(stream.decode));
  if (!stream.colourKey.empty()) entries->Add("/Mask", ArrayOf(stream.colourKey));
}

}  // namespace

int32_t ImageWriter::WriteProfile(Bytes profile, Colour colour, int* stream) {
  const auto known = std::find_if(profiles_.begin(), profiles_.end(),
                                  [&](const Profile& p) { return Equal(p.bytes.View(), profile); });
  if (known != profiles_.end()) {
    *stream = known->stream;
    return 0;
  }
  const Buffer packed = Deflate(profile, level_);
  Entries entries;
  entries.Add("/Alternate", DeviceOf(colour));
  entries.AddNumber("/N", Channels(colour));
  entries.Add("/Filter", std::string(NameOf(Filter::kFlate)));
  const int32_t code = entries.Write(document_, {packed.View()}, stream);
  if (code != 0) return code;
  profiles_.push_back({Buffer::CopyOf(profile), *stream});
  profileBytes_ += profile.size();
  for (; profileBytes_ > kMostProfiles; profiles_.pop_front()) {
    profileBytes_ -= profiles_.front().bytes.Size();
  }
  return 0;
}

int32_t ImageWriter::WriteStream(const EncodedStream& stream, const ImageRecord& record,
                                 int profile, int softMask, int* number) {
  Entries entries;
  entries.Add("/Type", "/XObject");
  entries.Add("/Subtype", "/Image");
  entries.AddNumber("/Width", stream.width);
  entries.AddNumber("/Height", stream.height);
  AddColours(stream, profile, &entries);
  AddEncoding(stream, &entries);
  if (softMask != 0) entries.Add("/SMask", std::to_string(softMask) + " 0 R");
  entries.Add("/Intent", "/RelativeColorimetric");
  entries.Add("/JTImageType", NameOf(record.role));
  if (!record.name.empty()) entries.Add("/JTImageName", TextString(record.name));
  return entries.Write(document_, stream.pieces, number);
}

int32_t ImageWriter::Write(const EncodedImage& image, const ImageRecord& record, int* number) {
  int profile = 0, softMask = 0;
  if (!image.profile.Empty()) {
    const int32_t code = WriteProfile(image.profile.View(), image.pixels.colour, &profile);
    if (code != 0) return code;
  }
  if (image.alpha) {
    const int32_t code =
        WriteStream(*image.alpha, {kPdfImageRoleAlpha, record.name}, 0, 0, &softMask);
    if (code != 0) return code;
  }
  return WriteStream(image.pixels, record, profile, softMask, number);
}

}  // namespace pictures
