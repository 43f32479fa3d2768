// Outputs that are no ordinary file: FIFOs, pipes, full disks.

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <fstream>
#include <thread>

#include "jtpdf/jtpdf.h"
#include "support/bytes.h"
#include "support/diagnostics.h"
#include "support/doc.h"
#include "support/pdf.h"
#include "support/temp_dir.h"

// Calls of every writer, with some more bytes than stream buffers hold.
Doc& WriteAll(Doc& doc) {
  static const std::string large(100000, 'x');
  doc.Init().Profile("profile").Image(Picture(large)).ImageWithAlpha(grey, &grey);
  doc.Extent(kA4).Draw(doc.last).Fill({1, 2, 3, 4, 5}, kRed).Form();
  const int form = doc.last;
  for (int i = 0; i < 25; ++i) doc.Page(form);
  return doc;
}

std::string BytesInMemoryDocument() {
  Doc doc;
  return WriteAll(doc).Finish("closing");
}

TEST(FifoDocument, HasTheBytesOfAMemoryDocument) {
  TempDir dir;
  const std::filesystem::path fifo = dir.File("fifo");
  ASSERT_EQ(0, mkfifo(fifo.c_str(), 0600));
  std::string received;
  std::thread reader([&] { received = ReadFile(fifo); });
  // The vocabulary checks that errno stays as it is through every call, closing included.
  JTPDFDocument* handle = nullptr;
  {
    Doc doc(fifo);
    handle = doc;
    WriteAll(doc);
    errno = 4242;
    EXPECT_EQ(0, FinalizePdfDoc(handle, "closing"));
    EXPECT_EQ(4242, errno);
  }
  reader.join();
  EXPECT_BYTES(BytesInMemoryDocument(), received);
  EXPECT_GT(Pdf(received).Size(), 50) << "the table leads to the objects";
}

TEST(PipeDocument, HasTheBytesOfAMemoryDocument) {
  int ends[2];
  ASSERT_EQ(0, pipe(ends));
  std::string received;
  std::thread reader([&] {
    char buffer[4096];
    for (ssize_t count; (count = read(ends[0], buffer, sizeof buffer)) > 0;) {
      received.append(buffer, static_cast<std::size_t>(count));
    }
  });
  {
    Doc doc(std::filesystem::path("/dev/fd/" + std::to_string(ends[1])));
    WriteAll(doc);
    EXPECT_EQ(0, FinalizePdfDoc(doc, "closing"));
  }
  close(ends[1]);
  reader.join();
  close(ends[0]);
  EXPECT_BYTES(BytesInMemoryDocument(), received);
}

TEST(FifoDocument, AReaderThatGoesAwayGivesEPIPE) {
  TempDir dir;
  const std::filesystem::path fifo = dir.File("fifo");
  ASSERT_EQ(0, mkfifo(fifo.c_str(), 0600));
  const auto savedHandler = std::signal(SIGPIPE, SIG_IGN);
  {
    std::thread reader([&] { std::ifstream(fifo).close(); });
    Doc doc(fifo);
    doc.Init();
    reader.join();
    const std::string large(1000000, 'x');
    const TPdfImageDescriptor image = Picture(large);
    int out = 77;
    errno = 0;
    EXPECT_EQ(EPIPE, WritePdfImage(doc, &image, false, kPdfImageRolePhoto, L"n", 0, nullptr, &out));
    EXPECT_EQ(77, out);
  }
  std::signal(SIGPIPE, savedHandler);
}

TEST(FullDisk, FinalizingGivesENOSPCAndOneLine) {
  Doc doc(std::filesystem::path("/dev/full"));
  doc.Init();
  Diagnostics diagnostics;
  errno = 0;
  EXPECT_EQ(ENOSPC, FinalizePdfDoc(doc, nullptr));
  EXPECT_EQ(ErrorLine("FinalizePdfDoc", ENOSPC), diagnostics.Take());
}

TEST(FullDisk, WritingALotGivesENOSPC) {
  Doc doc(std::filesystem::path("/dev/full"));
  doc.Init();
  const std::string large(1000000, 'x');
  const TPdfImageDescriptor image = Picture(large);
  Diagnostics diagnostics;
  int out = 77;
  errno = 0;
  EXPECT_EQ(ENOSPC, WritePdfImage(doc, &image, false, kPdfImageRolePhoto, L"n", 0, nullptr, &out));
  EXPECT_EQ(77, out);
  EXPECT_EQ(ErrorLine("WritePdfImage", ENOSPC), diagnostics.Take());
  // From here on the stream has failed: nothing sets errno any more.
  errno = 0;
  EXPECT_EQ(-1, WritePdfCanvas(doc, &out));
  errno = 0;
  EXPECT_EQ(-1, FinalizePdfDoc(doc, nullptr));
  EXPECT_EQ(77, out);
}

TEST(FullDisk, AFormThatWasNotWrittenLeavesTheDrawing) {
  Doc doc(std::filesystem::path("/dev/full"));
  doc.Init();
  for (int i = 0; i < 2000; ++i) doc.Draw(2);
  int out = 77;
  for (int attempt = 0; attempt < 2; ++attempt) {
    errno = 0;
    EXPECT_NE(0, WritePdfCanvas(doc, &out)) << "the drawing is more than a buffer";
    EXPECT_EQ(77, out);
  }
}
