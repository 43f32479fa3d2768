#include "document/images.h"

#include <gtest/gtest.h>

#include <climits>
#include <map>

#include "document/document.h"
#include "support/bytes.h"
#include "support/cases.h"
#include "support/diagnostics.h"
#include "support/doc.h"
#include "support/pdf.h"

using namespace std::string_literals;

// The arguments of WriteImage, with those of the sample: a grey 8-bit JPEG image of 640 by 480.
struct Image {
  std::string data = "12345";
  int colorSpace = 0;
  int colorSpaceObject = 0;
  int compression = 0;
  bool maskWhite = false;
  int width = 640;
  int height = 480;
  int bitsPerComponent = 8;
  int role = 1;
  std::wstring name = L"scan";
  std::vector<JTPDFDictionaryItem> items = {};
  int softMask = -1;
};

int Write(JTPDFDocument& doc, const Image& image) {
  const TPdfImageDescriptor descriptor = {image.data.data(),
                                          static_cast<std::uint32_t>(image.data.size()),
                                          static_cast<TPdfCompression>(image.compression),
                                          image.width,
                                          image.height,
                                          image.bitsPerComponent,
                                          static_cast<TPdfColorSpace>(image.colorSpace),
                                          image.colorSpaceObject};
  return doc.WriteImage(descriptor, image.maskWhite, static_cast<TPdfImageRole>(image.role),
                        image.name.c_str(), static_cast<unsigned>(image.items.size()),
                        image.items.data(), image.softMask);
}

// Object 2 of a document that holds the image.
std::string ObjectOf(const Image& image) {
  Doc doc;
  doc.Init();
  EXPECT_EQ(2, Write(*doc.operator->(), image));
  return Pdf(doc.Finish()).Object(2);
}

using Entries = std::map<std::string, std::string>;

// The entries of the sample, with changes; an empty value takes one out.
Entries SampleWith(const Entries& changes) {
  Entries entries = {{"/BitsPerComponent", "8"},
                     {"/ColorSpace", "/DeviceGray"},
                     {"/Filter", "/DCTDecode"},
                     {"/Height", "480"},
                     {"/Intent", "/RelativeColorimetric"},
                     {"/JTImageName", AsciiLiteral("scan")},
                     {"/JTImageType", "/Photo"},
                     {"/Subtype", "/Image"},
                     {"/Type", "/XObject"},
                     {"/Width", "640"}};
  for (const auto& [key, value] : changes) {
    if (value.empty()) {
      entries.erase(key);
    } else {
      entries[key] = value;
    }
  }
  return entries;
}

// The object of an image without nested entries.
std::string ObjectWith(const Entries& entries, const std::string& data) {
  std::string object = Lines("2 0 obj", "<<");
  for (const auto& [key, value] : entries) object += Lines(key + " " + value);
  return object + Lines("/Length " + std::to_string(data.size()), ">>", "stream",
                        data + "endstream", "endobj");
}

TEST(JTPDFDocumentWriteImage, SampleIsExact) {
  EXPECT_BYTES(
      Lines("2 0 obj", "<<", "/BitsPerComponent 8", "/ColorSpace /DeviceGray", "/Filter /DCTDecode",
            "/Height 480", "/Intent /RelativeColorimetric", "/JTImageName " + AsciiLiteral("scan"),
            "/JTImageType /Photo", "/Subtype /Image", "/Type /XObject", "/Width 640", "/Length 5",
            ">>", "stream", "12345endstream", "endobj"),
      ObjectOf({}));
}

struct ImageCase {
  const char* name;
  Image image;
  Entries changes;
  std::string notes = {};
};

class ImageObject : public testing::TestWithParam<ImageCase> {};

TEST_P(ImageObject, IsExact) {
  EXPECT_BYTES(ObjectWith(SampleWith(GetParam().changes), GetParam().image.data),
               ObjectOf(GetParam().image));
}

TEST_P(ImageObject, IsTheSameInDiagnosticMode) {
  Diagnostics diagnostics;
  EXPECT_BYTES(ObjectWith(SampleWith(GetParam().changes), GetParam().image.data),
               ObjectOf(GetParam().image));
  EXPECT_EQ(GetParam().notes, diagnostics.Take());
}

Image With(void (*change)(Image&)) {
  Image image;
  change(image);
  return image;
}
#define IMAGE(change) With([](Image& i) { change; })

INSTANTIATE_TEST_SUITE_P(
    JTPDFDocumentWriteImage, ImageObject,
    testing::Values(
        ImageCase{"GrayWithMask", IMAGE(i.maskWhite = true), {{"/Mask", "[255 255]"}}},
        ImageCase{"RGB", IMAGE(i.colorSpace = 1), {{"/ColorSpace", "/DeviceRGB"}}},
        ImageCase {
          "RGBWithMask", IMAGE(i.colorSpace = 1; i.maskWhite = true), {
            {"/ColorSpace", "/DeviceRGB"}, {
              "/Mask", "[255 255 255 255 255 255]"
            }
          }
        },
        ImageCase{"CMYKIsInverted",
                  IMAGE(i.colorSpace = 2),
                  {{"/ColorSpace", "/DeviceCMYK"}, {"/Decode", "[1 0 1 0 1 0 1 0]"}}},
        ImageCase {
          "CMYKIsInvertedWhateverTheCompression", IMAGE(i.colorSpace = 2; i.compression = 2), {
            {"/ColorSpace", "/DeviceCMYK"}, {"/Decode", "[1 0 1 0 1 0 1 0]"}, {
              "/Filter", "/FlateDecode"
            }
          }
        },
        ImageCase {
          "CMYKWithMask", IMAGE(i.colorSpace = 2; i.maskWhite = true), {
            {"/ColorSpace", "/DeviceCMYK"}, {"/Decode", "[1 0 1 0 1 0 1 0]"}, {
              "/Mask", "[255 255 255 255 255 255 255 255]"
            }
          }
        },
        ImageCase {
          "ICCBased", IMAGE(i.colorSpace = 3; i.colorSpaceObject = 17), {
            { "/ColorSpace", "17 0 R" }
          }
        },
        ImageCase {
          "ICCBasedWithMaskOfThreeComponents",
              IMAGE(i.colorSpace = 3; i.colorSpaceObject = -4; i.maskWhite = true), {
            {"/ColorSpace", "-4 0 R"}, {
              "/Mask", "[255 255 255 255 255 255]"
            }
          }
        },
        ImageCase{"ColorSpaceObjectIsForICCOnly", IMAGE(i.colorSpaceObject = 17), {}},
        ImageCase{"LZW", IMAGE(i.compression = 1), {{"/Filter", "/LZWDecode"}}},
        ImageCase{"Flate", IMAGE(i.compression = 2), {{"/Filter", "/FlateDecode"}}},
        ImageCase {
          "JPEG2000", IMAGE(i.compression = 3; i.colorSpace = 0; i.maskWhite = true), {
            {"/ColorSpace", ""}, {"/Filter", "/JPXDecode"}, {
              "/SMaskInData", "1"
            }
          }
        },
        ImageCase {
          "JPEG2000OfCMYKHasNoDecode", IMAGE(i.compression = 3; i.colorSpace = 2), {
            {"/ColorSpace", ""}, {"/Filter", "/JPXDecode"}, {
              "/SMaskInData", "1"
            }
          }
        },
        ImageCase {
          "JPEG2000DoesNotLookAtTheColorSpace", IMAGE(i.compression = 3; i.colorSpace = 99), {
            {"/ColorSpace", ""}, {"/Filter", "/JPXDecode"}, {
              "/SMaskInData", "1"
            }
          }
        },
        ImageCase{"SoftMaskZeroIsAReference", IMAGE(i.softMask = 0), {{"/SMask", "0 0 R"}}},
        ImageCase{"SoftMask", IMAGE(i.softMask = 12), {{"/SMask", "12 0 R"}}},
        ImageCase{"SoftMaskMinusTwoIsAReference", IMAGE(i.softMask = -2), {{"/SMask", "-2 0 R"}}},
        ImageCase {
          "SoftMaskBesideColourKey", IMAGE(i.softMask = 12; i.maskWhite = true), {
            {"/Mask", "[255 255]"}, {
              "/SMask", "12 0 R"
            }
          }
        },
        ImageCase {
          "UnknownColorSpace", IMAGE(i.colorSpace = 4; i.maskWhite = true), {{"/ColorSpace", ""}},
              "Invalid color space 4\n"
        },
        ImageCase{"UnknownCompression",
                  IMAGE(i.compression = -1),
                  {{"/Filter", ""}},
                  "Invalid compression type -1\n"},
        ImageCase {
          "ExtremeEnumerations",
              IMAGE(i.compression = INT_MAX; i.colorSpace = INT_MIN; i.role = INT_MIN),
              {{"/ColorSpace", ""}, {"/Filter", ""}, {"/JTImageType", "/"}},
              "Invalid compression type 2147483647\nInvalid color space -2147483648\n"
        },
        ImageCase{"RoleAbove8IsABareSolidus", IMAGE(i.role = 9), {{"/JTImageType", "/"}}},
        ImageCase {
          "NumbersAreWrittenAsTheyAre",
              IMAGE(i.width = 0; i.height = -480; i.bitsPerComponent = INT_MAX), {
            {"/Width", "0"}, {"/Height", "-480"}, {
              "/BitsPerComponent", "2147483647"
            }
          }
        },
        ImageCase{"NoData", IMAGE(i.data = ""), {}},
        ImageCase{"DataIsWrittenUnchanged", IMAGE(i.data = "\r\n\0endstream\r\nendobj\r\n\0"s), {}},
        ImageCase{"ItemsAreAdded",
                  IMAGE((i.items = {{"Zoom", L"a"}, {"/Alt", L"b"}})),
                  {{"/Alt", AsciiLiteral("b")}, {"/Zoom", AsciiLiteral("a")}}},
        ImageCase {
          "OwnEntriesReplaceItems",
              IMAGE((i.items = {{"Type", L"a"},
                                {"Subtype", L"a"},
                                {"BitsPerComponent", L"a"},
                                {"JTImageType", L"a"},
                                {"JTImageName", L"a"},
                                {"Intent", L"a"},
                                {"Filter", L"a"},
                                {"Width", L"a"},
                                {"Height", L"a"},
                                {"ColorSpace", L"a"},
                                {"Mask", L"a"},
                                {"Decode", L"a"},
                                {"SMask", L"a"}});
                    i.colorSpace = 2; i.maskWhite = true; i.softMask = 7),
          {
            {"/ColorSpace", "/DeviceCMYK"}, {"/Decode", "[1 0 1 0 1 0 1 0]"},
                {"/Mask", "[255 255 255 255 255 255 255 255]"}, {
              "/SMask", "7 0 R"
            }
          }
        },
        ImageCase {
          "ItemsSurviveWhereNothingIsSet",
              IMAGE((i.items = {{"ColorSpace", L"a"},
                                {"Filter", L"b"},
                                {"Mask", L"c"},
                                {"Decode", L"d"},
                                {"SMask", L"e"},
                                {"SMaskInData", L"f"}});
                    i.compression = 7; i.colorSpace = 7; i.maskWhite = true),
              {{"/ColorSpace", AsciiLiteral("a")}, {"/Filter", AsciiLiteral("b")},
               {"/Mask", AsciiLiteral("c")},       {"/Decode", AsciiLiteral("d")},
               {"/SMask", AsciiLiteral("e")},      {"/SMaskInData", AsciiLiteral("f")}},
              "Invalid compression type 7\nInvalid color space 7\n"
        },
        ImageCase {
          "ItemsSurviveInJPEG2000",
              IMAGE((i.items = {{"ColorSpace", L"a"}, {"Mask", L"c"}, {"SMaskInData", L"f"}});
                    i.compression = 3; i.maskWhite = true),
          {
            {"/ColorSpace", AsciiLiteral("a")}, {"/Filter", "/JPXDecode"},
                {"/Mask", AsciiLiteral("c")}, {
              "/SMaskInData", "1"
            }
          }
        }),
    NameOf<ImageCase>);

TEST(JTPDFDocumentWriteImage, EmptyNameIsWrittenAndNoted) {
  Diagnostics diagnostics;
  EXPECT_EQ(1, Count(ObjectOf(IMAGE(i.name = L"")), "/JTImageName ()\r\n"));
  const std::string note = diagnostics.Take();
  EXPECT_TRUE(note.starts_with("Error: unable to convert string to UTF-16 BE:0x")) << note;
  EXPECT_EQ(1, Count(note, "\n")) << note;
}

TEST(JTPDFDocumentWriteImage, NotesComeInTheOrderOfTheEntries) {
  Diagnostics diagnostics;
  ObjectOf(IMAGE((i.items = {{"A", nullptr}, {"B", L""}}); i.name = L""; i.compression = 8;
                 i.colorSpace = 9));
  const std::string notes = diagnostics.Take();
  EXPECT_EQ(3, Count(notes, "Error: unable to convert string to UTF-16 BE:0x")) << notes;
  EXPECT_TRUE(notes.ends_with("\nInvalid compression type 8\nInvalid color space 9\n")) << notes;
}

TEST(JTPDFDocumentWriteImage, NestedItemsAreRendered) {
  EXPECT_EQ(1,
            Count(ObjectOf(IMAGE((i.items = {{"/Outer/Inner", L"a"}}))),
                  Lines("/Outer", "<<", "/Inner " + AsciiLiteral("a"), ">>", "/Subtype /Image")));
}

TEST(JTPDFDocumentWriteImage, LengthItemIsNotRendered) {
  const std::string object = ObjectOf(IMAGE((i.items = {{"Length", L"a"}})));
  EXPECT_EQ(1, Count(object, "/Length")) << object;
}

TEST(JTPDFDocumentWriteImage, NoDataEndsOnTheNextLine) {
  EXPECT_TRUE(ObjectOf(IMAGE(i.data = ""))
                  .ends_with(Lines("/Length 0", ">>", "stream", "endstream", "endobj")));
}

TEST(JTPDFDocumentWriteImage, JPEG2000WithASoftMaskIsRefusedBeforeAnythingIsWritten) {
  Doc doc;
  doc.Init();
  for (const int softMask : {0, 2, -2}) {
    Image image;
    image.compression = 3;
    image.softMask = softMask;
    EXPECT_EQ("When using JPEG2000 no separate alpha channel is allowed",
              Refusal([&] { Write(*doc.operator->(), image); }));
  }
  EXPECT_BYTES(Doc().Init().Finish(), doc.Finish());
}

TEST(JTPDFDocumentWriteImage, JPEG2000WithASoftMaskIsRefusedBeforeTheStateIsLookedAt) {
  Doc doc;
  Image image;
  image.compression = 3;
  image.softMask = 2;
  EXPECT_EQ("When using JPEG2000 no separate alpha channel is allowed",
            Refusal([&] { Write(*doc.operator->(), image); }));
}

TEST(FilterValueFromCompression, NamesTheFourFilters) {
  EXPECT_EQ("/DCTDecode", FilterValueFromCompression(kPdfCompressionJPEG));
  EXPECT_EQ("/LZWDecode", FilterValueFromCompression(kPdfCompressionLZW));
  EXPECT_EQ("/FlateDecode", FilterValueFromCompression(kPdfCompressionFlate));
  EXPECT_EQ("/JPXDecode", FilterValueFromCompression(kPdfCompressionJPEG2000));
}

TEST(FilterValueFromCompression, NotesAnUnknownValueInDiagnosticModeOnly) {
  Diagnostics diagnostics;
  EXPECT_EQ("", FilterValueFromCompression(static_cast<TPdfCompression>(4)));
  EXPECT_EQ("Invalid compression type 4\n", diagnostics.Take());
  EXPECT_EQ("", FilterValueFromCompression(static_cast<TPdfCompression>(INT_MIN)));
  EXPECT_EQ("Invalid compression type -2147483648\n", diagnostics.Take());
  JTPDFSetDiagnosticMode(false);
  EXPECT_EQ("", FilterValueFromCompression(static_cast<TPdfCompression>(4)));
  EXPECT_EQ("", diagnostics.Take());
}

TEST(GetImageRoleName, NamesTheNineRoles) {
  const char* const names[] = {"Background", "Photo", "Mask",  "Border", "ClipArt",
                               "Alpha",      "Text",  "Shape", "Other"};
  for (int role = 0; role < 9; ++role) {
    EXPECT_EQ(names[role], GetImageRoleName(static_cast<TPdfImageRole>(role)));
  }
}

TEST(GetImageRoleName, IsEmptyAndSilentForOtherValues) {
  Diagnostics diagnostics;
  for (const int role : {9, -1, INT_MAX, INT_MIN}) {
    EXPECT_EQ("", GetImageRoleName(static_cast<TPdfImageRole>(role)));
  }
  EXPECT_EQ("", diagnostics.Take());
}
