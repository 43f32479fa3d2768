// The structure checker takes what the library writes and refuses every kind of damage by name.

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include <jtpdf/objects.h>

#include "pdf_structure.h"

namespace golden {
namespace {

constexpr JTPDFRect kSheet = {0, 0, 200, 100, 0};

// Pages of two forms, an image with a soft mask, a profile with its colour space.
std::string SoundFile(int pages = 12) {
  JTPDFDocument* doc = CreateMemoryPdfDoc(PDFCoordinateUnitPoint);
  EXPECT_EQ(InitPdfDoc(doc), 0);
  const TPdfImageDescriptor image = {"ab", 2, kPdfCompressionLZW, 1, 2, 8, kPdfColorSpaceGray, 0};
  int number = 0;
  int form = 0;
  EXPECT_EQ(WritePdfICCProfile(doc, "profile", 7, kPdfCompressionFlate, &number), 0);
  EXPECT_EQ(
      WritePdfImageWithAlpha(doc, &image, &image, kPdfImageRolePhoto, L"A(b)", 0, nullptr, &number),
      0);
  SetPdfCanvasBoundingBox(doc, kSheet);
  DrawPdfImage(doc, number);
  EXPECT_EQ(WritePdfCanvas(doc, &form), 0);
  for (int i = 0; i < pages / 2; ++i) EXPECT_EQ(WritePdfPage(doc, form, kSheet, kSheet), 0);
  EXPECT_EQ(WritePdfCanvas(doc, &form), 0);
  for (int i = pages / 2; i < pages; ++i) EXPECT_EQ(WritePdfPage(doc, form, kSheet, kSheet), 0);
  EXPECT_EQ(FinalizePdfDoc(doc, nullptr), 0);
  const std::string bytes(GetPdfData(doc), GetPdfDataSize(doc));
  DestroyPdfDoc(doc);
  return bytes;
}

// The text with the first "from" behind the first "anchor" replaced.
std::string Replaced(std::string bytes, const std::string& anchor, const std::string& from,
                     const std::string& to) {
  const std::size_t at = bytes.find(from, bytes.find(anchor));
  EXPECT_NE(at, std::string::npos) << from << " behind " << anchor;
  return bytes.replace(at, from.size(), to);
}

TEST(PdfStructure, TakesASoundFileAndCountsWhatItHolds) {
  const std::string bytes = SoundFile();
  const StructureReport report = CheckStructure(bytes);
  EXPECT_EQ(report.error, "") << "at " << report.offset;
  EXPECT_EQ(report.size, bytes.size());
  EXPECT_EQ(report.objects, 1u + 2 + 2 + 2 + 12 + 12 + 3 + 2);
  EXPECT_EQ(report.pages, 12u);
  EXPECT_EQ(report.page_nodes, 3u);
  EXPECT_EQ(report.images, 2u);
  EXPECT_EQ(report.forms, 2u);
  EXPECT_EQ(report.profiles, 1u);
  EXPECT_EQ(report.generous_nodes, 0u);
}

TEST(PdfStructure, RefusesAnEmptyFile) {
  EXPECT_FALSE(CheckStructure("").ok());
}

// Each kind of damage keeps the length where it can, so that the check in question is what sees it
// and not the table of positions behind.
struct Damage {
  const char* name;
  const char* anchor;
  const char* from;
  const char* to;
  const char* error;  // part of what the checker says
};

std::ostream& operator<<(std::ostream& out, const Damage& damage) {
  return out << damage.name;
}

class PdfStructureDamage : public testing::TestWithParam<Damage> {};

TEST_P(PdfStructureDamage, IsRefusedByName) {
  const Damage& damage = GetParam();
  const StructureReport report =
      CheckStructure(Replaced(SoundFile(), damage.anchor, damage.from, damage.to));
  EXPECT_FALSE(report.ok());
  EXPECT_NE(report.error.find(damage.error), std::string::npos) << report.error;
}

const Damage kDamages[] = {
    {"Version", "", "%PDF-1.5", "%PDF-1.4", "header"},
    {"Marker", "", "\xE2\xE3", "\xE2\xE2", "header"},
    {"GraphicsState", "", "/OPM 1", "/OPM 0", "graphics state"},
    {"ObjectNumber", "endobj", "\n2 0 obj", "\n3 0 obj", "object 3 stands where object 2"},
    {"Generation", "endobj", "\n2 0 obj", "\n2 1 obj", "object 2"},
    {"SkippedEndobj", "2 0 obj", "endobj", "endobx", "the end of object 2"},
    {"BareCarriageReturn", "4 0 obj", "/Height 2\r\n", "/Height 2\rx", "without a line feed"},
    {"BareLineFeed", "4 0 obj", "/Height 2\r\n", "/Height 2x\n", "without a carriage return"},
    {"UnclosedDictionary", "/Resources\r\n", ">>\r\n", "/X 1\r\n", "without \">>\""},
    {"ClosedTwice", "4 0 obj", "/Height 2\r\n", ">>\r\n", "object 4"},
    {"DictionaryWithoutOpening", "/Resources\r\n", "<<\r\n", "((\r\n", "the dictionary /Resources"},
    {"KeyWithoutValue", "4 0 obj", "/Height 2", "/Height2 ", "no value"},
    {"KeyWithoutSolidus", "4 0 obj", "/Height 2", "xHeight 2", "expected a name"},
    {"TwoBlanks", "4 0 obj", "/Width 1", "/Width  1", "no value"},
    {"LengthTooLong", "4 0 obj", "/Length 2", "/Length 3", "behind /Length bytes"},
    {"LengthTooShort", "4 0 obj", "/Length 2", "/Length 1", "behind /Length bytes"},
    {"LengthPastTheEnd", "4 0 obj", "/Length 2", "/Length 99999999", "ends inside the stream"},
    {"LengthNegative", "4 0 obj", "/Length 2", "/Length -2", "its /Length"},
    {"LengthNotLast", "4 0 obj", "/Width 1\r\n/Length 2", "/Length 2\r\n/Width 1", "its /Length"},
    {"LineEndBehindImageData", "4 0 obj", "abendstream", "ab\r\nendstream", "object 4"},
    {"LineEndBehindProfile", "2 0 obj", "profileendstream", "profile\r\nendstream", "object 2"},
    {"NoLineEndBehindFormContent", "/FormType", "\r\nendstream", "endstream", "behind /Length"},
    {"FormContentStart", "/FormType", "/GS0 gs", "/GS1 gs", "begins with the graphics state"},
    {"PageContent", "8 0 obj", "q 1 0 0 1 0 0 cm", "q 1 0 0 1 0 0 mm", "paint one form"},
    {"PageForm", "8 0 obj", "/Fm6 Do", "/Fm5 Do", "that its resources do not name"},
    {"MissingStream", "5 0 obj", "stream\r\n", "streaX\r\n", "object 5"},
    {"ImageWithoutWidth", "4 0 obj", "/Width 1", "/Wodth 1", "without /Width"},
    {"ImageWithoutHeight", "4 0 obj", "/Height 2", "/Heigit 2", "without /Height"},
    {"ImageIntent", "4 0 obj", "/RelativeColorimetric", "/Perceptualxxxxxxxxxx", "intent"},
    {"ImageFilter", "4 0 obj", "/LZWDecode", "/JPXDecode", "/SMaskInData"},
    {"FormBox", "6 0 obj", "200.0000", "200.0.00", "no value"},
    {"FormBoxOfThree", "6 0 obj", "0.0000 0.0000", "0.00000000000", "four numbers"},
    {"UnknownKind", "6 0 obj", "/Subtype /Form", "/Subtype /Norm", "no kind that is written"},
    {"SoftMaskOfAForm", "5 0 obj", "/SMask 4", "/SMask 3", "names a colour space, not an image"},
    {"SoftMaskAhead", "5 0 obj", "/SMask 4", "/SMask 9", "not there yet"},
    {"ImageName", "6 0 obj", "/Im5 5 0 R", "/Im5 4 0 R", "a reference that is not written"},
    {"ImageThatIsAProfile", "6 0 obj", "/Im5 5 0 R", "/Im2 2 0 R", "names a profile"},
    {"ImageNotThere", "6 0 obj", "/Im5 5 0 R", "/Im0 0 0 R", "not there yet"},
    {"ColorSpaceProfile", "3 0 obj", "/ICCBased 2", "/ICCBased 1", "the profile before it"},
    {"ColorSpaceBlank", "3 0 obj", "[ /ICCBased", "[x/ICCBased", "a colour space"},
    {"StringMark", "4 0 obj", "(\xFE\xFF", "(\xFF\xFE", "UTF-16"},
    {"StringOdd", "4 0 obj", "\\000A", "\\000\\000A", "UTF-16"},
    {"StringEscape", "4 0 obj", "\\000A", "\\777A", "an escape"},
    {"StringParenthesis", "4 0 obj", "\\000A", "\\000(", "without a backslash"},
    {"StringUnended", "4 0 obj", "\\))\r\n", "\\)x\r\n", "a string without an end"},
    {"PageWithoutGroup", "/Type /Page", "/S /Transparency", "/S /Transparencx", "transparency"},
    {"PageOrder", "/Type /Page", "/Contents 9", "/Contents 8", "order of their contents"},
    {"PageBox", "/Contents 7", "/MediaBox", "/MediaBix", "/MediaBox"},
    {"PageParentBehind", "/Contents 7", "/Parent 32", "/Parent 12", "behind its kids"},
    {"PageParentWrong", "/Contents 7", "/Parent 32", "/Parent 33", "its /Parent is 33"},
    {"PageParentNowhere", "/Contents 7", "/Parent 32", "/Parent 99", "its /Parent is 99"},
    {"KidTwice", "/Kids", "22 0 R", "21 0 R", "the next is object 22"},
    {"KidsOrder", "/Kids", "21 0 R 22 0 R", "22 0 R 21 0 R", "the next is object 21"},
    {"KidMissing", "/Kids", "21 0 R ", "", "the next is object 21"},
    {"KidLost", "33 0 obj", "[30 0 R 31 0 R]", "[30 0 R]",
     "names object 32, the next is object 31"},
    {"NodeCount", "32 0 obj", "/Count 10", "/Count 11", "is to claim 10"},
    {"RestCount", "33 0 obj", "/Count 2", "/Count 3", "is to claim 2"},
    {"RootCount", "34 0 obj", "/Count 12", "/Count 11", "is to claim 12"},
    {"NodeParent", "33 0 obj", "/Parent 34", "/Parent 35", "its /Parent is 35"},
    {"RootWithParent", "34 0 obj", "/Type /Pages", "/Parent 35 0 R\r\n/Type /Pages", "no root"},
    {"CatalogPages", "35 0 obj", "/Pages 34", "/Pages 33", "page-tree root before it"},
    {"CatalogType", "35 0 obj", "/Catalog", "/Cotalog", "no kind"},
    {"InfoProducer", "36 0 obj", "/Producer", "/Prodicer", "no kind"},
    {"TableKeyword", "36 0 obj", "xref", "xrex", "cross-reference table"},
    {"TableSize", "\nxref", "0 37", "0 36", "cross-reference table"},
    {"TableStart", "\nxref", "\n0 37", "\n1 37", "cross-reference table"},
    {"FreeHead", "\nxref", "65535 f", "00000 f", "free-list head"},
    {"EntryOffset", "\nxref", "0000000017", "0000000016", "the entry of object 1"},
    {"EntryKind", "0000000017", "00000 n", "00000 f", "the entry of object 1"},
    {"EntryTooShort", "0000000017", "n\r\n", "n\n", "the entry of object 1"},
    {"EntryTooLong", "0000000017", "n\r\n", "n \r\n", "the entry of object 1"},
    {"EntryMissing", "\nxref", "0000000017 00000 n\r\n", "", "the entry of object 1"},
    {"TrailerSize", "trailer", "/Size 37", "/Size 36", "the trailer's size"},
    {"TrailerRoot", "trailer", "/Root 35", "/Root 34", "the trailer's root"},
    {"TrailerInfo", "trailer", "/Info 36", "/Info 35", "the trailer's information"},
    {"StartXref", "startxref", "\r\n", "\r\n1", "the table's position"},
    {"EndOfFile", "startxref", "%%EOF", "%%EOX", "the end-of-file marker"},
    {"BytesBehind", "startxref", "%%EOF\r\n", "%%EOF\r\nmore\r\n", "behind the end-of-file"},
    {"BytesBetween", "2 0 obj", "endobj\r\n3", "endobj\r\n\r\n3", "object"},
};

INSTANTIATE_TEST_SUITE_P(Kinds, PdfStructureDamage, testing::ValuesIn(kDamages),
                         [](const auto& row) { return std::string(row.param.name); });

// Objects and entries of a host's, a reserved number and an outline of three.
std::string OpenFile() {
  JTPDFDocument* doc = CreateMemoryPdfDoc(PDFCoordinateUnitPoint);
  EXPECT_EQ(InitPdfDoc(doc), 0);
  int reserved = 0;
  int number = 0;
  EXPECT_EQ(ReservePdfObject(doc, &reserved), 0);
  const JTPDFEntry entries[] = {{"/Subtype", "/Image"}, {"/A/B", "[2 0 R\n<</C (\\)>)>>]"}};
  EXPECT_EQ(WritePdfStream(doc, 2, entries, "ab", 2, &number), 0);
  EXPECT_EQ(WritePdfObject(doc, "[ /ICCBased 3 0 R ]", &number), 0);
  EXPECT_EQ(WriteReservedPdfObject(doc, reserved, "<< /K null /L [] >>"), 0);
  EXPECT_EQ(SetPdfCatalogEntry(doc, "/PageMode", "/UseOutlines"), 0);
  EXPECT_EQ(SetPdfPageEntry(doc, "/Annots", "[ << /F 4 0 R >> ]"), 0);
  EXPECT_EQ(SetPdfCanvasEntry(doc, "/Resources/Font/F1", "<< /Type /Font >>"), 0);
  EXPECT_EQ(AddPdfBookmark(doc, 0, L"a", 0), 0);
  EXPECT_EQ(AddPdfBookmark(doc, 1, L"b", 1), 0);
  EXPECT_EQ(AddPdfBookmark(doc, 0, L"c", 1), 0);
  int form = 0;
  EXPECT_EQ(WritePdfCanvas(doc, &form), 0);
  for (int page = 0; page < 2; ++page) EXPECT_EQ(WritePdfPage(doc, form, kSheet, kSheet), 0);
  EXPECT_EQ(FinalizePdfDoc(doc, nullptr), 0);
  std::string bytes(GetPdfData(doc), GetPdfDataSize(doc));
  DestroyPdfDoc(doc);
  return bytes;
}

constexpr StructureOptions kOpenShapes = {.open_objects = true};

TEST(PdfStructure, TakesObjectsOfTheHostsOnlyWhereTheyAreAllowed) {
  const StructureReport report = CheckStructure(OpenFile(), kOpenShapes);
  EXPECT_EQ(report.error, "") << "at " << report.offset;
  EXPECT_EQ(report.open_objects, 3u);
  EXPECT_EQ(report.images, 1u);
  EXPECT_EQ(report.forms, 1u);
  EXPECT_EQ(report.pages, 2u);
  EXPECT_EQ(report.bookmarks, 3u);
  EXPECT_FALSE(CheckStructure(OpenFile()).ok());
  EXPECT_EQ(CheckStructure(SoundFile(), kOpenShapes).error, "");
}

class OpenStructureDamage : public testing::TestWithParam<Damage> {};

TEST_P(OpenStructureDamage, IsRefusedByName) {
  const Damage& damage = GetParam();
  const StructureReport report =
      CheckStructure(Replaced(OpenFile(), damage.anchor, damage.from, damage.to), kOpenShapes);
  EXPECT_FALSE(report.ok());
  EXPECT_NE(report.error.find(damage.error), std::string::npos) << report.error;
}

const Damage kOpenDamages[] = {
    {"NumberTwice", "\n4 0 obj", "\n2 0 obj", "\n3 0 obj", "object 3 stands where"},
    {"NumberNotUsed", "\n4 0 obj", "\n2 0 obj", "\n9 0 obj", "object 9 stands where"},
    {"NumberFarAway", "", "\n3 0 obj", "\n9999999 0 obj", "stands where object 2"},
    {"ValueTwice", "\n2 0 obj", "<< /K null /L [] >>", "1     null /L []   ", "not exactly"},
    {"OpenBracket", "\n4 0 obj", "3 0 R ]", "3 0 R  ", "inside of an object"},
    {"ClosingOfNothing", "\n4 0 obj", "[ /ICC", ">>/ICC", ">> without <<"},
    {"KeyWithoutValue", "\n2 0 obj", "/K null", "/K     ", "a key that has no value"},
    {"KeyThatIsNoName", "\n2 0 obj", "/K null", "11 null", "a key that is no name"},
    {"NoValue", "\n2 0 obj", "null", "nuII", "is no value"},
    {"ReferenceToNothing", "\n4 0 obj", "3 0 R", "/ 0 R", "a reference to no number"},
    {"ReferenceBeyondTheEnd", "\n4 0 obj", "3 0 R", "99 0 R", "which is not there"},
    {"LengthOfAStream", "\n3 0 obj", "/Length 2", "/Length 1", "behind /Length bytes"},
    {"ContentsOfAnotherKind", "\n8 0 obj", "/Contents 6", "/Contents 5", "names a form"},
    {"PageWithoutBox", "\n8 0 obj", "/MediaBox", "/MediaBix", "/MediaBox"},
    {"CatalogWithoutOutline", "/PageMode", "/Pages", "/Poges", "page-tree root"},
    {"OutlineCount", "\n11 0 obj", "/Count 3", "/Count 2", "/Count"},
    {"OutlineLast", "\n11 0 obj", "/Last 14", "/Last 13", "/Last"},
    {"BookmarkNext", "\n12 0 obj", "/Next 14", "/Next 13", "/Next"},
    {"BookmarkPrevious", "\n14 0 obj", "/Prev 12", "/Prev 13", "/Next"},
    {"BookmarkParent", "\n13 0 obj", "/Parent 12", "/Parent 11", "/Count"},
    {"BookmarkPage", "\n13 0 obj", "/Dest [9", "/Dest [6", "leads to no page"},
};

INSTANTIATE_TEST_SUITE_P(Kinds, OpenStructureDamage, testing::ValuesIn(kOpenDamages),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(PdfStructure, RefusesAFileOfOpenObjectsWithAnyOneByteMissingOrTwice) {
  const std::string bytes = OpenFile();
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    EXPECT_FALSE(CheckStructure(bytes.substr(0, i) + bytes.substr(i + 1), kOpenShapes).ok())
        << "without byte " << i;
    EXPECT_FALSE(CheckStructure(bytes.substr(0, i + 1) + bytes.substr(i), kOpenShapes).ok())
        << "with byte " << i << " twice";
  }
}

TEST(PdfStructure, RefusesAFileWithAnyOneByteMissing) {
  const std::string bytes = SoundFile(1);
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    EXPECT_FALSE(CheckStructure(bytes.substr(0, i) + bytes.substr(i + 1)).ok())
        << "without byte " << i;
  }
}

TEST(PdfStructure, RefusesAFileWithAnyOneByteTwice) {
  const std::string bytes = SoundFile(1);
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    EXPECT_FALSE(CheckStructure(bytes.substr(0, i + 1) + bytes.substr(i)).ok())
        << "with byte " << i << " twice";
  }
}

TEST(PdfStructure, RefusesAFileThatIsCutOffAnywhere) {
  const std::string bytes = SoundFile(1);
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    EXPECT_FALSE(CheckStructure(bytes.substr(0, i)).ok()) << "cut off at " << i;
  }
}

TEST(PdfStructure, TakesAClosingTextOnlyWhereItIsAllowed) {
  StructureOptions options;
  options.closing_text = true;
  const std::string bytes = SoundFile() + "% bye\r\n";
  EXPECT_FALSE(CheckStructure(bytes).ok());
  EXPECT_TRUE(CheckStructure(bytes, options).ok());
  EXPECT_EQ(CheckStructure(bytes, options).closing_bytes, 7u);
  EXPECT_FALSE(CheckStructure(bytes + "x", options).ok()) << "a line without an end";
}

TEST(PdfStructure, TakesUncheckedNumbersOnlyWhereTheyAreAllowed) {
  JTPDFDocument* doc = CreateMemoryPdfDoc(PDFCoordinateUnitPoint);
  ASSERT_EQ(InitPdfDoc(doc), 0);
  DrawPdfImage(doc, -3);
  DrawPdfImage(doc, 4000);
  int form = 0;
  ASSERT_EQ(WritePdfCanvas(doc, &form), 0);
  ASSERT_EQ(WritePdfPage(doc, 5000, kSheet, kSheet), 0);
  ASSERT_EQ(FinalizePdfDoc(doc, nullptr), 0);
  const std::string bytes(GetPdfData(doc), GetPdfDataSize(doc));
  DestroyPdfDoc(doc);
  StructureOptions options;
  options.unchecked_numbers = true;
  EXPECT_NE(CheckStructure(bytes).error.find("not there yet"), std::string::npos);
  EXPECT_EQ(CheckStructure(bytes, options).error, "");
}

TEST(PdfStructure, CountsNodesThatClaimMoreThanTheyHold) {
  JTPDFDocument* doc = CreateMemoryPdfDoc(PDFCoordinateUnitPoint);
  ASSERT_EQ(InitPdfDoc(doc), 0);
  int form = 0;
  ASSERT_EQ(WritePdfCanvas(doc, &form), 0);
  for (int i = 0; i < 191; ++i) ASSERT_EQ(WritePdfPage(doc, form, kSheet, kSheet), 0);
  ASSERT_EQ(FinalizePdfDoc(doc, nullptr), 0);
  const StructureReport report =
      CheckStructure(std::string_view(GetPdfData(doc), GetPdfDataSize(doc)));
  DestroyPdfDoc(doc);
  EXPECT_EQ(report.error, "");
  EXPECT_EQ(report.page_nodes, 20u + 2 + 1);
  EXPECT_EQ(report.generous_nodes, 1u) << "the second node of the second level";
}

}  // namespace
}  // namespace golden
