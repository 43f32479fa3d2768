#include "output.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "album.h"
#include "album_writer.h"
#include "pdf_document.h"

namespace pictures::tool {
namespace {

namespace fs = std::filesystem;

class OutputTest : public testing::Test {
 protected:
  void SetUp() override {
    std::string name = (fs::temp_directory_path() / "jtpdf-output-XXXXXX").string();
    ASSERT_NE(mkdtemp(name.data()), nullptr);
    folder_ = name;
  }
  void TearDown() override { fs::remove_all(folder_); }

  std::string Target() const { return (folder_ / "out.pdf").string(); }
  bool NothingIsThere() const { return fs::is_empty(folder_); }

  fs::path folder_;
};

EncodedImage ImageOf(const std::string& data) {
  EncodedImage image;
  image.pixels.pieces = {{reinterpret_cast<const uint8_t*>(data.data()), data.size()}};
  image.pixels.width = image.pixels.height = 1;
  return image;
}

PageLayout SmallPage() {
  PageLayout layout;
  layout.page = layout.crop = layout.image = layout.cell = {0, 0, 10, 10, 0};
  return layout;
}

void AddPage(PdfDocument& document, int image) {
  document.Draw(image, SmallPage());
  document.AddPage(SmallPage());
}

TEST_F(OutputTest, TakesAsManyBytesAsItMayAndNoMore) {
  const auto output = OpenFileOutput(Target(), 100);
  ASSERT_EQ(output->Write(std::string(60, 'x').data(), 60), 0);
  EXPECT_NO_THROW(output->CheckRoom(40));
  EXPECT_THROW(output->CheckRoom(41), OutputError);
  EXPECT_THROW(output->CheckRoom(UINT64_MAX), OutputError);
  EXPECT_TRUE(NothingIsThere());
}

TEST_F(OutputTest, HasRoomForPositionsOfTenDigits) {
  const auto output = OpenFileOutput(Target());
  EXPECT_NO_THROW(output->CheckRoom(10'000'000'000));
  EXPECT_THROW(output->CheckRoom(10'000'000'001), OutputError);
}

TEST_F(OutputTest, IsThereOnlyWhenItIsWhole) {
  {
    const auto output = OpenFileOutput(Target());
    ASSERT_EQ(output->Write("PDF", 3), 0);
    EXPECT_TRUE(NothingIsThere());
    output->Commit();
  }
  EXPECT_EQ(fs::file_size(Target()), 3u);
  OpenFileOutput(Target())->Write("none", 4);
  EXPECT_EQ(fs::file_size(Target()), 3u);
}

TEST_F(OutputTest, ReplacesAFileThatCameMeanwhile) {
  const auto output = OpenFileOutput(Target());
  ASSERT_EQ(output->Write("PDF", 3), 0);
  std::ofstream(Target()) << "other";
  output->Commit();
  EXPECT_EQ(fs::file_size(Target()), 3u);
}

TEST_F(OutputTest, AnImageThatCrossesTheLimitIsRefusedBeforeItsFirstByte) {
  const auto output = OpenFileOutput(Target(), 3000);
  PdfDocument document(*output, {}, 6);
  const std::string small(500, 'a'), large(3001, 'b');
  AddPage(document, document.WriteImage(ImageOf(small), kPdfImageRolePhoto, L""));
  try {
    document.WriteImage(ImageOf(large), kPdfImageRolePhoto, L"");
    FAIL() << "3001 bytes";
  } catch (const OutputError& error) {
    EXPECT_STREQ(error.what(),
                 "would hold more than 3000 bytes, the most in which PDF readers find their way; "
                 "make several files");
  }
  const std::string half(1501, 'c');
  EncodedImage halves = ImageOf(half);
  halves.alpha = EncodedStream{};
  halves.alpha->pieces = halves.pixels.pieces;
  EXPECT_THROW(document.WriteImage(halves, kPdfImageRolePhoto, L""), OutputError);
}

// Writes a document of one image.
void WriteDocument(Output& output) {
  PdfDocument document(output, {}, 6);
  const std::string data(500, 'a');
  AddPage(document, document.WriteImage(ImageOf(data), kPdfImageRolePhoto, L""));
  document.Finish();
  output.Commit();
}

TEST_F(OutputTest, ADocumentMayBeAsLargeAsTheLimitAndNoLarger) {
  WriteDocument(*OpenFileOutput(Target()));
  const uint64_t size = fs::file_size(Target());
  fs::remove(Target());
  EXPECT_THROW(WriteDocument(*OpenFileOutput(Target(), size - 1)), OutputError);
  EXPECT_TRUE(NothingIsThere());
  EXPECT_NO_THROW(WriteDocument(*OpenFileOutput(Target(), size)));
}

// Two pages that pass through, of so many bytes each, and of files that are not there.
AlbumPlan PlanOf(uint64_t size) {
  AlbumPlan plan;
  for (size_t i = 0; i < 2; ++i) {
    plan.inputs.push_back({"/nowhere/at/all.jpg", false, {}});
    plan.held.emplace_back();
    plan.identities.emplace_back();
    plan.pages.push_back({i, {}, SmallPage(), i, i});
    plan.pages[i].image.size = size;
  }
  return plan;
}

TEST_F(OutputTest, AnAlbumThatCannotFitIsRefusedBeforeItsFirstByte) {
  Console console(Verbosity::kQuiet);
  const auto output = OpenFileOutput(Target());
  EXPECT_THROW(WriteAlbum(PlanOf(5'000'000'001), {}, *output, console), OutputError);
  EXPECT_THROW(WriteAlbum(PlanOf(5'000'000'000), {}, *output, console), BadInput);
  AlbumPlan twice = PlanOf(6'000'000'000);
  twice.pages[1].sameAs = 0;
  EXPECT_THROW(WriteAlbum(twice, {}, *output, console), BadInput);
}

TEST(FindInput, TellsFilesOfDifferentDevicesApart) {
  AlbumPlan plan = PlanOf(1);
  plan.identities[1] = {7, 42, 100, 0};
  EXPECT_EQ(FindInput(plan, 7, 42), &plan.inputs[1]);
  EXPECT_EQ(FindInput(plan, 8, 42), nullptr);
  EXPECT_EQ(FindInput(plan, 7, 43), nullptr);
}

}  // namespace
}  // namespace pictures::tool
