// Life cycle of a document, its lines and its object numbers.

#include "document/document.h"

#include <algorithm>
#include <cerrno>
#include <locale>
#include <new>
#include <utility>

#include "objects/diagnostic_note.h"
#include "objects/platform_text.h"
#include "objects/text_string.h"
#include "objects/value_format.h"

namespace {

constexpr wchar_t cPdfProducer[] = L"JTPDF 2.1.6";

}  // namespace

JTPDFDocument::JTPDFDocument(double unitFactor, OutputKind kind)
    : producer(cPdfProducer),
      unitFactor(unitFactor),
      outputKind(kind),
      output(kind == kOutputFile ? static_cast<std::ostream*>(&fileStream) : &memoryStream),
      canvas(unitFactor) {
  // A global C++ locale may convert characters on their way into a file. Imbuing costs more than
  // asking.
  if (output->getloc() != std::locale::classic()) output->imbue(std::locale::classic());
  output->exceptions(std::ios_base::badbit | std::ios_base::failbit);
}

JTPDFDocument::JTPDFDocument(double unitFactor) : JTPDFDocument(unitFactor, kOutputMemory) {}

JTPDFDocument::JTPDFDocument(double unitFactor, wchar_t const* fileName, wchar_t const* creator,
                             wchar_t const* author)
    : JTPDFDocument(unitFactor, kOutputFile) {
  this->fileName = fileName;
  this->creator = TextOrEmpty(creator);
  this->author = TextOrEmpty(author);
}

JTPDFDocument::~JTPDFDocument() {
  if (!fileStream.is_open()) return;
  const int savedErrno = errno;
  try {
    PrintDiagnosticNote("Warning: JTPDFDocument destroyed without being finalized.");
  } catch (...) {
    // A standard error stream that throws, or no memory for the line: there is nobody to tell.
  }
  fileStream.exceptions(std::ios_base::goodbit);
  FlushLines();  // of an object that an exception cut short: what was written stays
  fileStream.close();
  errno = savedErrno;
}

void JTPDFDocument::Refuse(char const* message) {
  throw std::ios_base::failure(message, std::io_errc::stream);
}

void JTPDFDocument::Initialize() {
  if (finalized) Refuse("When finalized, a pdf document cannot be re-initialized");
  if (initialized) Refuse("PDF document cannot be initialized more than once");
  MakeRoom(xref);  // the header line and object 1
  if (outputKind == kOutputFile) {
    OpenWithUnicodePath(fileStream, fileName.c_str(),
                        std::ios_base::binary | std::ios_base::out | std::ios_base::trunc);
  }
  initialized = true;
  AddToXRef(WriteLn("%PDF-1.5"));
  // Four bytes above 127 tell transfer programs that the file is binary (ISO 32000-1, 7.5.2).
  WriteLn("%\xE2\xE3\xCD\xD3");
  InitializeGraphicsStateDict();
}

bool JTPDFDocument::IsWritable() const {
  return output->good() && (outputKind == kOutputMemory || fileStream.is_open());
}

void JTPDFDocument::RequireInitialized() const {
  if (!initialized) Refuse("Cannot write to a non-initialized document");
}

void JTPDFDocument::RequireWritable() {
  RequireInitialized();
  if (!IsWritable()) output->setstate(std::ios_base::badbit);  // throws
}

std::streampos JTPDFDocument::WriteLn(std::string_view line) {
  RequireInitialized();
  const bool writable = IsWritable();
  const std::streamoff position =
      writable ? written + static_cast<std::streamoff>(lines.Size()) : std::streamoff(-1);
  if (line.empty()) return position;
  if (!writable) RequireWritable();  // throws
  AppendLine(line);
  return position;
}

void JTPDFDocument::AppendLine(std::string_view line) {
  constexpr std::string_view kLineEnd = "\r\n";
  if (line.size() + kLineEnd.size() > lines.Room()) FlushLines();
  if (line.size() + kLineEnd.size() <= lines.Room()) {
    lines << line;
  } else {
    WriteRaw(line.data(), line.size());
  }
  lines << kLineEnd;
}

void JTPDFDocument::WriteRaw(char const* data, unsigned long size) {
  FlushLines();
  if (size != 0) WriteToSink(data, size);  // data may be null for 0
}

void JTPDFDocument::FlushLines() {
  if (lines.Size() == 0) return;
  WriteToSink(std::string_view(lines).data(), lines.Size());
  lines.Clear();
}

void JTPDFDocument::WriteToSink(char const* data, std::size_t size) {
  if (outputKind == kOutputMemory) MakeMemoryRoom(size);
  output->write(data, static_cast<std::streamsize>(size));
  written += static_cast<std::streamoff>(size);
}

void JTPDFDocument::MakeMemoryRoom(std::size_t more) {
  constexpr std::size_t kGrowth = 16;
  constexpr std::size_t kLeast = 4096;
  const std::size_t needed = static_cast<std::size_t>(written) + more;
  if (needed <= memoryCapacity || needed > pdfData.max_size() / kGrowth) return;
  try {
    std::string larger;
    larger.reserve(std::max(kLeast, kGrowth * needed));
    larger += std::move(memoryStream).str();
    memoryCapacity = larger.capacity();
    memoryStream.str(std::move(larger));
    memoryStream.seekp(0, std::ios_base::end);
  } catch (std::bad_alloc const&) {
    // The stream grows by itself then, by less, as far as the memory goes.
  }
}

int JTPDFDocument::AddToXRef(std::streampos position) {
  const int number = NextObject();
  xref.push_back(position);
  return number;
}

void JTPDFDocument::Finalize(char const* closingText) {
  if (finalized) {
    PrintDiagnosticNote("Warning: Finalize called multiple times. Ignored.");
    return;
  }
  // A sink that failed says so itself.
  if (finalizing && IsWritable()) {
    Refuse("A pdf document that failed to be finalized is incomplete");
  }
  finalizing = initialized;
  FinalizePages();
  JTPDFDict catalog;
  catalog["/Type"] = "/Catalog";
  catalog["/Pages"] = AsRefString(NextObject() - 1);
  const int rootObject = WriteDict(catalog.AsString());
  const int infoObject = WriteDict(MakeInfoDict().AsString());
  FinalizeTrailer(infoObject, rootObject);
  if (closingText != nullptr) WriteLn(closingText);
  FlushLines();

  if (outputKind == kOutputFile && fileStream.is_open()) CloseFile();
  if (outputKind == kOutputMemory) {
    pdfData = std::move(memoryStream).str();  // hands the buffer over instead of copying it
    memoryStream.str(std::string());
    memoryCapacity = 0;
    written = 0;
  }
  graphicsStateObject = 0;
  finalized = true;
}

void JTPDFDocument::CloseFile() {
  // Closing an ofstream writes what it still buffers and then closes the file, which may change
  // errno after that write failed. Writing first keeps the reason: "no space left", not nothing.
  const bool flushed = fileStream.rdbuf()->pubsync() == 0;
  const int flushErrno = errno;
  const bool closed = fileStream.rdbuf()->close() != nullptr;
  if (!flushed) errno = flushErrno;
  if (!flushed || !closed) fileStream.setstate(std::ios_base::failbit);
}

char const* JTPDFDocument::GetPdfData() const {
  return outputKind == kOutputMemory && finalized ? pdfData.c_str() : nullptr;
}

std::size_t JTPDFDocument::GetPdfDataSize() const {
  return GetPdfData() == nullptr ? 0 : pdfData.size();
}
