// Objects, entries and operators of the host's. tests/readers/pixels.py lists what page 1 of the
// first document has to show; the two are changed together.

#include <cstring>

#include "drawings.h"
#include "image_data.h"

namespace golden {
namespace {

constexpr JTPDFRect kSheet = {0, 0, 400, 200, 0};
constexpr JTPDFRGBColor kGround = {240, 240, 240, 255};
constexpr const char* kHelvetica =
    "<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica /Encoding /WinAnsiEncoding >>";

using Entries = std::vector<JTPDFEntry>;

Entries ImageEntries(const Entries& more) {
  Entries entries = {
      {"/Type", "/XObject"}, {"/Subtype", "/Image"}, {"/Width", "16"}, {"/Height", "16"}};
  entries.insert(entries.end(), more.begin(), more.end());
  return entries;
}

// Red, lime, blue and yellow quadrants. Rows are differences, by the filters of PNG: None, Sub, Up.
std::string PngRows() {
  std::string rows;
  for (int y = 0; y < 16; ++y) {
    const std::string left = y < 8 ? std::string("\xFF\0\0", 3) : std::string("\0\0\xFF", 3);
    const std::string right = y < 8 ? std::string("\0\xFF\0", 3) : std::string("\xFF\xFF\0", 3);
    if (y % 8 == 0) {
      rows += '\0';
      for (int x = 0; x < 16; ++x) rows += x < 8 ? left : right;
    } else if (y % 8 == 1) {
      rows += '\1';
      for (int x = 0; x < 16; ++x) {
        for (std::size_t c = 0; c < 3; ++c) {
          const char before = x == 0 ? '\0' : x < 9 ? left[c] : right[c];
          rows += static_cast<char>((x < 8 ? left : right)[c] - before);
        }
      }
    } else {
      rows += '\2' + std::string(48, '\0');
    }
  }
  return rows;
}

// A white left and a black right half: one line by its runs, 15 like the line above, the end.
constexpr char kGroup4[] = "\x33\x17\xFF\xFF\xFF\xF0\x01\x00\x10";

// As in the chunks of a PNG file, in two pieces.
int PredictedImage(Host& host) {
  const std::string data = Flate(PngRows());
  const JTPDFPiece pieces[] = {
      {data.data(), 10}, {nullptr, 0}, {data.data() + 10, data.size() - 10}};
  const Entries entries = ImageEntries({{"/BitsPerComponent", "8"},
                                        {"/ColorSpace", "/DeviceRGB"},
                                        {"/DecodeParms/Colors", "3"},
                                        {"/DecodeParms/Columns", "16"},
                                        {"/DecodeParms/Predictor", "15"},
                                        {"/Filter", "/FlateDecode"}});
  int number = 0;
  Host::Check(WritePdfStreamPieces(host.doc, static_cast<unsigned>(entries.size()), entries.data(),
                                   3, pieces, &number),
              "WritePdfStreamPieces");
  host.CountImage();
  return number;
}

// Colours 0 to 3 of a palette, of which 3 is transparent.
int IndexedImage(Host& host) {
  std::string rows;
  for (int y = 0; y < 16; ++y) rows += y < 8 ? std::string("\0\0\x55\x55", 4) : "\xAA\xAA\xFF\xFF";
  return host.Stream(
      ImageEntries({{"/BitsPerComponent", "2"},
                    {"/ColorSpace", "[ /Indexed /DeviceRGB 3\r\n<FF0000 00FF00 0000FF FFFF00> ]"},
                    {"/Mask", "[3 3]"}}),
      rows);
}

int FaxImage(Host& host) {
  return host.Stream(ImageEntries({{"/BitsPerComponent", "1"},
                                   {"/ColorSpace", "/DeviceGray"},
                                   {"/DecodeParms", "<< /K -1 /Columns 16 /Rows 16 >>"},
                                   {"/Decode", "[ 0 1 ]"},
                                   {"/Filter", "/CCITTFaxDecode"}}),
                     std::string(kGroup4, sizeof kGroup4 - 1));
}

// A red square whose right half a mask lets through.
int MaskedImage(Host& host) {
  std::string stencil;
  for (int y = 0; y < 16; ++y) stencil += std::string("\xFF\0", 2);
  const int mask = host.Stream(ImageEntries({{"/ImageMask", "true"}}), stencil);
  const std::string reference = std::to_string(mask) + " 0 R";
  const std::string red("\xFF\0\0", 3);
  return host.Stream(ImageEntries({{"/BitsPerComponent", "8"},
                                   {"/ColorSpace", "/DeviceRGB"},
                                   {"/Filter", "[/FlateDecode]"},
                                   {"/Interpolate", "false"},
                                   {"/Mask", reference.c_str()}}),
                     Flate(Quadrants({red, red, red, red})));
}

// Runs of one byte, as RunLengthDecode takes them (ISO 32000-1, 7.4.5).
int32_t EncodeRuns(void* context, const char* data, std::size_t size, const char** encoded,
                   std::size_t* encodedSize) {
  std::string& out = *static_cast<std::string*>(context);
  out.clear();
  for (std::size_t at = 0, run = 0; at < size; at += run) {
    for (run = 1; at + run < size && run < 128 && data[at + run] == data[at];) ++run;
    out += run == 1 ? '\0' : static_cast<char>(257 - run);
    out += data[at];
  }
  out += '\x80';
  *encoded = out.data();
  *encodedSize = out.size();
  return 0;
}

void Attach(Host& host) {
  const int node = host.Reserve();
  const std::string kids = "[" + std::to_string(node) + " 0 R]";
  host.CatalogEntry("/Names/EmbeddedFiles/Kids", kids.c_str());
  const int file = host.Reserve();
  const std::string description = "<< /Type /Filespec /F (note.txt) /UF (note.txt) /EF << /F " +
                                  std::to_string(file) + " 0 R >> >>";
  const int fileEntry = host.Object(description.c_str());
  const JTPDFEntry type = {"/Type", "/EmbeddedFile"};
  const JTPDFPiece text = {"a note\n", 7};
  Host::Check(WriteReservedPdfStream(host.doc, file, 1, &type, 1, &text), "WriteReservedPdfStream");
  const std::string names = "<< /Limits [(note.txt) (note.txt)]\n   /Names [(note.txt) " +
                            std::to_string(fileEntry) + " 0 R] >>";
  Host::Check(WriteReservedPdfObject(host.doc, node, names.c_str()), "WriteReservedPdfObject");
}

void DrawOpenPage(Host& host) {
  const int images[] = {PredictedImage(host), IndexedImage(host), FaxImage(host),
                        MaskedImage(host)};
  SetPdfCanvasBoundingBox(host.doc, kSheet);
  FillPdfRectangle(host.doc, kSheet, kGround);
  double left = 20;
  for (const int image : images) {
    DrawPdfImageInRect(host.doc, image, {left, 120, 50, 50, 0});
    left += 90;
  }
  DrawPdfContent(host.doc, "q 0 0.5 0 rg 20 40 50 50 re f Q");
  host.CanvasEntry("/Resources/Font/F1", kHelvetica);
  DrawPdfContent(host.doc, "BT /F1 24 Tf 100 50 Td (Caf\\351 \\(open\\)) Tj ET");
}

}  // namespace

void OpenObjects(Host& host) {
  host.CatalogEntry("/PageLayout", "/SinglePage");
  host.CatalogEntry("/ViewerPreferences/FitWindow", "true");
  host.CatalogEntry("/Lang", "(en)");
  host.CatalogEntry("/Pages", "null");  // the library's own wins
  Attach(host);
  host.Stream({}, "");
  host.Object("[ null true -1.5 /Name#20 (a\\)\r\nb) <00 ff> << /K [ [ ] ] >> ]");
  const int link = host.Object(
      "<< /Type /Annot /Subtype /Link /Rect [20 40 70 90] /Border [0 0 0]\r\n"
      "/A << /S /URI /URI (https://example.org/) >> >>");
  const std::string links = "[" + std::to_string(link) + " 0 R]";

  DrawOpenPage(host);
  host.PageEntry("/Annots", links.c_str());
  host.PageEntry("/TrimBox", "[10 10 390 190]");
  host.PageEntry("/Group/CS", "/DeviceCMYK");  // the library's own wins
  host.Page(host.Form(), kSheet);

  std::string runs;
  Host::Check(SetPdfContentEncoder(host.doc, "/RunLengthDecode", EncodeRuns, &runs),
              "SetPdfContentEncoder");
  DrawPdfContent(host.doc, ("0 0 1 rg" + std::string(300, ' ') + "20 20 160 160 re f").c_str());
  host.Page(host.Form(), kSheet);
  FillPdfRectangle(host.doc, {20, 20, 160, 160, 0}, kRed);  // too little to be encoded
  host.Page(host.Form(), kSheet);
}

void Bookmarks(Host& host) {
  struct Bookmark {
    int level;
    const wchar_t* title;
    int page;
  };
  const Bookmark bookmarks[] = {{0, L"One", 0},   {1, L"One (a)", 0},    {2, L"Deep", 2},
                                {1, L"One b", 1}, {0, L"Two \u20AC", 1}, {0, L"", 2},
                                {1, nullptr, 2}};
  for (const Bookmark& bookmark : bookmarks) {
    Host::Check(AddPdfBookmark(host.doc, bookmark.level, bookmark.title, bookmark.page),
                "AddPdfBookmark");
  }
  host.CatalogEntry("/PageMode", "/UseOutlines");
  SetPdfCanvasBoundingBox(host.doc, kSheet);
  const int form = host.Form();
  for (int page = 0; page < 3; ++page) host.Page(form, kSheet);
}

}  // namespace golden
