// document - one PDF file, written from start to end in a single forward pass.
//
//     %PDF-1.5                      Initialize
//     %âãÍÓ
//     1 0 obj ... endobj            the graphics state
//     2 0 obj ... endobj            images, colour spaces, forms, page contents, as called for
//     ...
//     9 0 obj ... endobj            Finalize: pages, page tree, catalog, information
//     xref 0 10 ... trailer ... startxref ... %%EOF
//
// It says in which order and in which state things are written; what each of them looks like is
// the business of its own file.
#ifndef JTPDF_DOCUMENT_DOCUMENT_H
#define JTPDF_DOCUMENT_DOCUMENT_H

#include <cstddef>
#include <memory>
#include <string>
#include <utility>

#include "document/content_encoder.h"
#include "document/information.h"
#include "document/outline.h"
#include "document/pages.h"
#include "graphics/box.h"
#include "graphics/canvas.h"
#include "jtpdf/types.h"
#include "objects/dict.h"
#include "objects/entry_tree.h"
#include "objects/views.h"
#include "output/object_writer.h"

// Failures are std::ios_base::failure: those of the sink, and refusals of calls in the wrong
// state. Nothing is rolled back after one. A Finalize that fails cannot be called again.
class JTPDFDocument : public ObjectWriter {
 public:
  // A document that goes to sink. Null creator and author count as empty. Opens nothing.
  JTPDFDocument(double unitFactor, std::unique_ptr<Sink> sink, const wchar_t* creator = nullptr,
                const wchar_t* author = nullptr);
  // A document kept in memory.
  explicit JTPDFDocument(double unitFactor);
  // A document in the file fileName (not null).
  JTPDFDocument(double unitFactor, const wchar_t* fileName, const wchar_t* creator,
                const wchar_t* author);
  // A document handed to write in pieces.
  JTPDFDocument(double unitFactor, JTPDFWriteFunction write, void* context);
  // Closes the file whatever state it is in; never throws.
  virtual ~JTPDFDocument();

  // Opens the sink and writes the head and the graphics state. After a failed open it may be
  // called again.
  void Initialize();

  // Writes what is left of the file and closes it, or keeps the bytes. A second call is ignored.
  void Finalize(const char* closingText);

  // The bytes of a finalised memory document, else null and 0.
  const char* GetPdfData() const { return Data().data(); }
  std::size_t GetPdfDataSize() const { return Data().size(); }

  JTPDFCanvas& GetCanvas() { return canvas; }

  // Writes an image XObject with the encoded data as it is. name may be null and counts as empty
  // then; softMask is an image's number or kNoSoftMask.
  int WriteImage(const TPdfImageDescriptor& image, bool maskWhite, TPdfImageRole role,
                 const wchar_t* name, unsigned int itemCount, const JTPDFDictionaryItem* items,
                 int softMask);

  // Writes the profile's stream and the colour space made of it, whose number is returned.
  // objectOut is neither read nor written.
  int WriteICCProfile(const char* profile, unsigned int size, TPdfCompression compression,
                      int* objectOut);

  // Writes the canvas as a form XObject and clears it.
  int WriteCanvas();
  // Writes the content stream that paints form and queues the page. The crop box comes before the
  // media box.
  void WritePage(int form, const JTPDFBox& cropBox, const JTPDFBox& mediaBox);
  // Queues a page that shows contents, a content stream of the host's whose resources are among the
  // page's entries: an object less than a page that paints a form.
  void AddPage(int contents, const JTPDFBox& cropBox, const JTPDFBox& mediaBox);

  // Objects, entries and bookmarks of the host's: see jtpdf/objects.h.
  int WriteObject(int object, const char* value);
  int WriteStream(int object, ArrayView<JTPDFEntry> entries, ArrayView<JTPDFPiece> pieces);
  void SetCatalogEntry(const char* key, const char* value);
  void SetPageEntry(const char* key, const char* value);
  void SetCanvasEntry(const char* key, const char* value);
  void SetContentEncoder(const char* filter, JTPDFEncodeFunction encode, void* context);
  void AddBookmark(int level, const wchar_t* title, int page);
  void SetOpenPage(int page, const char* view);

  // What Finalize writes: the queued pages and the tree above them, the root last; the
  // cross-reference table and the trailer; and the information dictionary.
  void FinalizePages();
  void FinalizeTrailer(int infoObject, int rootObject);
  JTPDFDict MakeInfoDict() const { return information.MakeDict(); }

  // Whether the host wants memory that runs out as a code, and whether a call that has none has met
  // that since the last TakeMemoryError.
  bool HasMemoryErrors() const { return hasMemoryErrors; }
  void SetMemoryErrors(bool on) { hasMemoryErrors = on; }
  void RememberMemoryError() { memoryErrorWaits = true; }
  bool TakeMemoryError() { return std::exchange(memoryErrorWaits, false); }

  void InitializeGraphicsStateDict();
  void SetInfoItem(const char* key, const wchar_t* value) { information.SetItem(key, value); }
  bool GetMgMk() const { return information.GetMark(); }
  void SetMgMk(bool mark) { information.SetMark(mark); }

 private:
  void Abandon() noexcept;
  void RequireComplete() const;
  int WriteCatalog(int firstPage, int pagesObject, int outlineObject);

  const double unitFactor;
  DocumentInformation information;
  JTPDFCanvas canvas;
  PageQueue pages;
  EntryTree catalogEntries;
  ContentEncoder encoder;
  Outline outline;
  int openPage = 0;
  std::string openView;  // "/Fit"; empty where the host doesn't say what is shown first
  bool finalizing = false;
  bool finalized = false;
  int graphicsStateObject = 0;
  bool hasMemoryErrors = false;
  bool memoryErrorWaits = false;
};

#endif  // JTPDF_DOCUMENT_DOCUMENT_H
