#include "output/object_writer.h"

#include <gtest/gtest.h>

#include <memory>
#include <utility>

#include "document/document.h"
#include "support/bytes.h"
#include "support/cases.h"
#include "support/doc.h"
#include "support/pdf.h"

using namespace std::string_literals;

TEST(JTPDFDocumentWriteDict, FirstObjectAfterInitializeIsNumber2) {
  Doc doc;
  doc.Init();
  EXPECT_EQ(2, doc->WriteDict("/A 1"));
  EXPECT_EQ(3, doc->WriteDict("/A 1", "x", false));
  EXPECT_EQ(4, doc->WriteDict(""));
}

TEST(JTPDFDocumentWriteDict, NumberIsThatOfItsLineAndOfItsOffset) {
  Doc doc;
  doc.Init();
  int numbers[20];
  for (int& number : numbers) number = doc->WriteDict("/A 1");
  const Pdf pdf(doc.Finish());
  for (const int number : numbers) {
    EXPECT_BYTES(Lines(std::to_string(number) + " 0 obj", "<<", "/A 1", ">>", "endobj"),
                 pdf.Object(number));
  }
}

struct DictCase {
  const char* name;
  std::string dict;
  std::string stream;
  bool noStreamIfEmpty;
  std::string object;
};

class WriteDictObject : public testing::TestWithParam<DictCase> {};

TEST_P(WriteDictObject, IsExact) {
  Doc doc;
  doc.Init();
  doc->WriteDict(GetParam().dict, GetParam().stream, GetParam().noStreamIfEmpty);
  EXPECT_BYTES(GetParam().object, Pdf(doc.Finish()).Object(2));
}

std::string ThousandBytesWithNuls() {
  std::string bytes(1000, '\0');
  for (std::size_t i = 0; i < bytes.size(); i += 3) bytes[i] = static_cast<char>(i);
  return bytes;
}

INSTANTIATE_TEST_SUITE_P(
    JTPDFDocumentWriteDict, WriteDictObject,
    testing::Values(
        DictCase{"NothingHasNoEmptyLine", "", "", true, Lines("2 0 obj", "<<", ">>", "endobj")},
        DictCase{"PlainDictionary", "/A 1\r\n/B 2", "", true,
                 Lines("2 0 obj", "<<", "/A 1", "/B 2", ">>", "endobj")},
        DictCase{
            "EmptyStreamIsWrittenWithoutTheFlag", "/A 1", "", false,
            Lines("2 0 obj", "<<", "/A 1", "/Length 0", ">>", "stream", "endstream", "endobj")},
        DictCase{"OneByteStreamIsWrittenWithTheFlag", "", "x", true,
                 Lines("2 0 obj", "<<", "/Length 1", ">>", "stream", "x", "endstream", "endobj")},
        DictCase{"OneByteStreamIsWrittenWithoutTheFlag", "", "x", false,
                 Lines("2 0 obj", "<<", "/Length 1", ">>", "stream", "x", "endstream", "endobj")},
        DictCase{"LengthComesLast", "/Z 1", "xyz", true,
                 Lines("2 0 obj", "<<", "/Z 1", "/Length 3", ">>", "stream", "xyz", "endstream",
                       "endobj")},
        DictCase{"StreamBytesAreWrittenUnchanged", "", ThousandBytesWithNuls(), true,
                 Lines("2 0 obj", "<<", "/Length 1000", ">>", "stream", ThousandBytesWithNuls(),
                       "endstream", "endobj")},
        DictCase{"LineEndsOfTheStreamAreCounted", "", "\r\n\0\r\n"s, true,
                 Lines("2 0 obj", "<<", "/Length 5", ">>", "stream", "\r\n\0\r\n"s, "endstream",
                       "endobj")}),
    NameOf<DictCase>);

TEST(JTPDFDocumentWriteDict, OneArgumentIsAPlainDictionary) {
  Doc one;
  Doc two;
  one.Init()->WriteDict("/A 1");
  two.Init()->WriteDict("/A 1", "", true);
  EXPECT_BYTES(two.Finish(), one.Finish());
}

TEST(JTPDFDocumentGraphicsState, IsObject1InItsFixedOrder) {
  EXPECT_BYTES(
      Lines("1 0 obj", "<<", "/AIS false", "/BM /Normal", "/ca 1.0", "/CA 1.0", "/OP false",
            "/op false", "/OPM 1", "/SA true", "/SMask /None", "/Type /ExtGState", ">>", "endobj"),
      Pdf(Doc().Init().Finish()).Object(1));
}

TEST(JTPDFDocumentGraphicsState, IsNamedByFormsAndForgottenByFinalize) {
  Doc doc;
  doc.Init();
  doc->InitializeGraphicsStateDict();  // object 2 takes its place
  doc.Form();
  EXPECT_EQ(1, Count(Pdf(doc.Finish()).Object(3), "/GS0 2 0 R\r\n"));
}

// ---- The sink that is written to ----

// Begins where 32 bits end, and counts.
class FarSink : public Sink {
 public:
  void Open() override {}
  void Write(std::string_view text, std::string_view data) override {
    writes += text.size() + data.size() != 0;
    last = text;
  }
  void Close() override {}
  bool IsGood() const override { return true; }
  bool IsUnfinished() const override { return false; }
  void Abandon(std::string_view) noexcept override {}

  int writes = 0;
  std::string last;
};

struct Writer : ObjectWriter {
  explicit Writer(std::unique_ptr<Sink> sink) : ObjectWriter(std::move(sink)) { OpenSink(); }
};

TEST(ObjectWriter, EachObjectReachesTheSinkWhenItEnds) {
  auto sink = std::make_unique<FarSink>();
  FarSink& far = *sink;
  Writer out(std::move(sink));
  out.AddToXRef(0);
  out.WriteDict("/A 1");
  EXPECT_EQ(1, far.writes);
  EXPECT_BYTES(Lines("1 0 obj", "<<", "/A 1", ">>", "endobj"), far.last);
  out.WriteDict("/A 2");
  EXPECT_EQ(2, far.writes);
}

// Positions have 64 bits: data that is only counted gets there at once.
TEST(ObjectWriter, CountsPositionsBeyond32Bits) {
  Writer out(std::make_unique<FarSink>());
  out.AddToXRef(0);
  out.BeginObject();
  constexpr std::size_t kFar = 0xFFFFFFF0;
  out.WriteRaw("not read", kFar);
  out.EndObject();
  out.WriteDict("");
  const auto head = static_cast<std::streamoff>(Lines("1 0 obj", "endobj").size());
  EXPECT_EQ(static_cast<std::streamoff>(kFar) + head, out.Positions()[2]);
  EXPECT_EQ(std::streampos(out.Positions()[2] + 25), out.WriteLn("x"));
}
