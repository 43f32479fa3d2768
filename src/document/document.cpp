// Life cycle of a document.

#include "document/document.h"

#include <cerrno>
#include <utility>

#include "document/forms.h"
#include "document/graphics_state.h"
#include "document/icc_profile.h"
#include "document/images.h"
#include "document/open_objects.h"
#include "document/page_tree.h"
#include "objects/diagnostic_note.h"
#include "objects/syntax.h"
#include "objects/value_format.h"
#include "output/callback_sink.h"
#include "output/file_sink.h"
#include "output/memory_sink.h"
#include "output/trailer.h"

JTPDFDocument::JTPDFDocument(double unitFactor, std::unique_ptr<Sink> sink, const wchar_t* creator,
                             const wchar_t* author)
    : ObjectWriter(std::move(sink)),
      unitFactor(unitFactor),
      information(creator, author),
      canvas(unitFactor) {}

JTPDFDocument::JTPDFDocument(double unitFactor)
    : JTPDFDocument(unitFactor, std::make_unique<MemorySink>()) {}

JTPDFDocument::JTPDFDocument(double unitFactor, const wchar_t* fileName, const wchar_t* creator,
                             const wchar_t* author)
    : JTPDFDocument(unitFactor, std::make_unique<FileSink>(fileName), creator, author) {}

JTPDFDocument::JTPDFDocument(double unitFactor, JTPDFWriteFunction write, void* context)
    : JTPDFDocument(unitFactor, std::make_unique<CallbackSink>(write, context)) {}

JTPDFDocument::~JTPDFDocument() {
  if (IsSinkUnfinished()) Abandon();
}

void JTPDFDocument::Abandon() noexcept {
  const int savedErrno = errno;
  try {
    PrintDiagnosticNote("Warning: JTPDFDocument destroyed without being finalized.");
  } catch (...) {
    // A standard error stream that throws, or no memory for the line: there is nobody to tell.
  }
  AbandonSink();
  errno = savedErrno;
}

void JTPDFDocument::Initialize() {
  if (finalized) Refuse("When finalized, a pdf document cannot be re-initialized");
  if (IsSinkOpened()) Refuse("PDF document cannot be initialized more than once");
  OpenSink();
  AddToXRef(WriteLn("%PDF-1.5"));
  // Four bytes above 127 tell transfer programs that the file is binary (ISO 32000-1, 7.5.2).
  WriteLn("%\xE2\xE3\xCD\xD3");
  InitializeGraphicsStateDict();
}

void JTPDFDocument::InitializeGraphicsStateDict() {
  graphicsStateObject = WriteGraphicsState(*this);
}

int JTPDFDocument::WriteImage(const TPdfImageDescriptor& image, bool maskWhite, TPdfImageRole role,
                              const wchar_t* name, unsigned int itemCount,
                              const JTPDFDictionaryItem* items, int softMask) {
  return ::WriteImage(*this, image, maskWhite, role, name, itemCount, items, softMask);
}

int JTPDFDocument::WriteICCProfile(const char* profile, unsigned int size,
                                   TPdfCompression compression, int* /*objectOut*/) {
  return ::WriteICCProfile(*this, {profile, size}, compression);
}

int JTPDFDocument::WriteCanvas() {
  return WriteForm(*this, canvas, graphicsStateObject, encoder);
}

void JTPDFDocument::WritePage(int form, const JTPDFBox& cropBox, const JTPDFBox& mediaBox) {
  pages.MakeRoom();
  const int contents = WritePageContents(*this, form);
  pages.Add({form, contents, kNoHostEntries, true, cropBox.AsPoints(unitFactor),
             mediaBox.AsPoints(unitFactor)});
}

void JTPDFDocument::AddPage(int contents, const JTPDFBox& cropBox, const JTPDFBox& mediaBox) {
  RequireWritable(0);
  pages.MakeRoom();
  pages.Add({0, contents, kNoHostEntries, false, cropBox.AsPoints(unitFactor),
             mediaBox.AsPoints(unitFactor)});
}

int JTPDFDocument::WriteObject(int object, const char* value) {
  return ::WriteObject(*this, object, value);
}

int JTPDFDocument::WriteStream(int object, ArrayView<JTPDFEntry> entries,
                               ArrayView<JTPDFPiece> pieces) {
  return ::WriteStream(*this, object, entries, pieces);
}

namespace {

void SetEntry(EntryTree& entries, const char* key, const char* value) {
  if (!entries.Set(key, value)) {
    RefuseArgument("An entry is not a path of names with one object");
  }
}

}  // namespace

void JTPDFDocument::SetCatalogEntry(const char* key, const char* value) {
  SetEntry(catalogEntries, key, value);
}

void JTPDFDocument::SetPageEntry(const char* key, const char* value) {
  SetEntry(pages.NextEntries(), key, value);
}

void JTPDFDocument::SetCanvasEntry(const char* key, const char* value) {
  SetEntry(canvas.HostEntries(), key, value);
}

void JTPDFDocument::SetContentEncoder(const char* filter, JTPDFEncodeFunction encode,
                                      void* context) {
  encoder.Set(filter, encode, context);
}

void JTPDFDocument::AddBookmark(int level, const wchar_t* title, int page) {
  outline.Add(level, title, page);
}

void JTPDFDocument::SetOpenPage(int page, const char* view) {
  std::string text = view != nullptr ? view : "/Fit";
  if (page < 0) RefuseArgument("The page to show first is negative");
  if (text.empty() || text[0] != '/' || !IsDirectObject(("[0 " + text + "]").c_str())) {
    RefuseArgument("The view is not the rest of a destination");
  }
  openView = std::move(text);
  openPage = page;
}

void JTPDFDocument::FinalizePages() {
  WritePageTree(*this, pages);
}

void JTPDFDocument::FinalizeTrailer(int infoObject, int rootObject) {
  WriteTrailer(*this, infoObject, rootObject);
}

int JTPDFDocument::WriteCatalog(int firstPage, int pagesObject, int outlineObject) {
  if (catalogEntries.IsEmpty() && outlineObject == 0 && openView.empty()) {
    const int number = BeginObject();
    Compose() << "<<\r\n/Pages " << pagesObject << " 0 R\r\n/Type /Catalog\r\n>>\r\n";
    EndObject();
    return number;
  }
  EntryTree entries = catalogEntries;
  if (outlineObject != 0) entries.Overrule("/Outlines", AsRefString(outlineObject));
  if (!openView.empty()) {
    entries.Overrule("/OpenAction", "[" + AsRefString(firstPage + openPage) + " " + openView + "]");
  }
  entries.Overrule("/Pages", AsRefString(pagesObject));
  entries.Overrule("/Type", "/Catalog");
  const std::string text = entries.AsString();
  return WriteDict(std::string_view(text).substr(0, text.size() - kLineEnd.size()));
}

void JTPDFDocument::RequireComplete() const {
  if (HasReserved()) RefuseArgument("An object number that was reserved is not used");
  if (!outline.LeadsTo(pages.Pages().size())) RefuseArgument("A bookmark leads to no page");
  if (!openView.empty() && static_cast<std::size_t>(openPage) >= pages.Pages().size()) {
    RefuseArgument("The page to show first is none");
  }
}

void JTPDFDocument::Finalize(const char* closingText) {
  if (finalized) {
    PrintDiagnosticNote("Warning: Finalize called multiple times. Ignored.");
    return;
  }
  // A sink that failed says so itself.
  if (finalizing && IsSinkGood()) {
    Refuse("A pdf document that failed to be finalized is incomplete");
  }
  if (IsSinkOpened() && !finalizing) RequireComplete();
  finalizing = IsSinkOpened();
  const int firstPage = NextObject();
  FinalizePages();
  const int pagesObject = NextObject() - 1;
  const int outlineObject = outline.IsEmpty() ? 0 : outline.Write(*this, firstPage);
  const int rootObject = WriteCatalog(firstPage, pagesObject, outlineObject);
  const int infoObject = information.Write(*this);
  FinalizeTrailer(infoObject, rootObject);
  if (closingText != nullptr) WriteLn(closingText);
  CloseSink();
  pages = {};
  outline.Clear();
  graphicsStateObject = 0;
  finalized = true;
}
