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
// The class is one; its members are implemented in the files that their headings name.
#ifndef JTPDF_DOCUMENT_DOCUMENT_H
#define JTPDF_DOCUMENT_DOCUMENT_H

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <ios>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "graphics/box.h"
#include "graphics/canvas.h"
#include "jtpdf/types.h"
#include "objects/dict.h"
#include "objects/text_buffer.h"

// Failures are std::ios_base::failure: those of the sink, and refusals of calls in the wrong
// state. Nothing is rolled back after one.
// Memory that runs out never leaves half an object in the file: whatever an object needs is
// allocated before it begins. A Finalize that fails cannot be called again.
class JTPDFDocument {
 public:
  // document.cpp: life cycle, lines, numbering.

  // A document kept in memory.
  explicit JTPDFDocument(double unitFactor);
  // A document in the file fileName (not null); null creator and author count as empty. Opens
  // nothing.
  JTPDFDocument(double unitFactor, wchar_t const* fileName, wchar_t const* creator,
                wchar_t const* author);
  JTPDFDocument(JTPDFDocument const&) = delete;
  JTPDFDocument& operator=(JTPDFDocument const&) = delete;
  // Closes the file whatever state it is in; never throws.
  virtual ~JTPDFDocument();

  // Opens the sink and writes the head and the graphics state. After a failed open it may be
  // called again.
  void Initialize();

  // Writes line and "\r\n" and returns the position at which the line begins, -1 on a failed sink.
  // An empty line writes nothing at all. Together with WriteRaw the only way to the sink. Short
  // lines reach it together: a file at the end of their object, memory once there are many.
  std::streampos WriteLn(std::string_view line);

  // Appends the position of an object that begins, for which there is room; returns its index, the
  // object's number.
  int AddToXRef(std::streampos position);

  // Writes what is left of the file and closes it, or keeps the bytes. A second call is ignored.
  void Finalize(char const* closingText);

  // The bytes of a finalised memory document, else null and 0.
  char const* GetPdfData() const;
  std::size_t GetPdfDataSize() const;

  JTPDFCanvas& GetCanvas() { return canvas; }

  // indirect_objects.cpp

  // Write an object: a dictionary of the body text dict, and the stream behind it. With
  // noStreamIfEmpty an empty stream is left out, else it is written with length 0.
  int WriteDict(std::string const& dict);
  int WriteDict(std::string const& dict, std::string const& stream, bool noStreamIfEmpty);
  // The same for a stream that is the text of lines, even an empty one, without a copy of it.
  int WriteDict(std::string const& dict, JTPDFStringList const& stream);
  void InitializeGraphicsStateDict();

  // images.cpp

  // Writes an image XObject with the encoded data as it is. softMask is an image's number or -1.
  int WriteImage(char const* data, unsigned long size, TPdfColorSpace colorSpace,
                 int colorSpaceObject, TPdfCompression compression, bool maskWhite, int width,
                 int height, int bitsPerComponent, TPdfImageRole role, std::wstring const& name,
                 unsigned int itemCount, JTPDFDictionaryItem const* items, int softMask);

  // icc_profile.cpp

  // Writes the profile's stream and the colour space made of it, whose number is returned.
  // objectOut is neither read nor written.
  int WriteICCProfile(char const* profile, unsigned int size, TPdfCompression compression,
                      int* objectOut);

  // forms_and_pages.cpp

  // Writes the canvas as a form XObject and clears it.
  int WriteCanvas();
  // Writes the content stream that paints form and queues the page. The crop box comes before the
  // media box.
  void WritePage(int form, JTPDFBox const& cropBox, JTPDFBox const& mediaBox);

  // page_tree.cpp

  // Writes the queued pages and the tree above them, the root last.
  void FinalizePages();

  // trailer_and_info.cpp

  void FinalizeTrailer(int infoObject, int rootObject);
  JTPDFDict MakeInfoDict();
  void SetInfoItem(char const* key, wchar_t const* value);
  bool GetMgMk() const { return mgmk; }
  void SetMgMk(bool mark) { mgmk = mark; }

 private:
  enum OutputKind : std::int32_t { kOutputFile = 0, kOutputMemory = 1 };

  JTPDFDocument(double unitFactor, OutputKind kind);

  // document.cpp
  [[noreturn]] static void Refuse(char const* message);
  bool IsWritable() const;
  void RequireInitialized() const;
  void RequireWritable();
  void AppendLine(std::string_view line);
  void WriteRaw(char const* data, unsigned long size);
  void FlushLines();
  void WriteToSink(char const* data, std::size_t size);
  // A stringstream doubles its buffer, which copies a large document once or twice over in the end.
  // Growing sixteenfold copies a third of it on average, and for three sizes out of four the peak
  // is the document itself: what is not touched yet is only address space.
  void MakeMemoryRoom(std::size_t more);
  void CloseFile();
  // Room for more elements, without which push_back could fail.
  template <typename T>
  static void MakeRoom(std::vector<T>& elements, std::size_t more = 1) {
    if (elements.capacity() - elements.size() < more) elements.reserve(2 * elements.size() + 8);
  }

  // indirect_objects.cpp: the number of the next object, the line "N 0 obj" that takes it, the
  // lines from a stream's length to its data, and the line "endobj" with which the object goes to
  // the sink.
  int NextObject() const { return static_cast<int>(xref.size()); }
  int BeginObject();
  void BeginStream(std::size_t size);
  void EndObject();

  std::wstring creator;
  std::wstring author;
  std::wstring producer;
  double unitFactor;
  bool mgmk = false;
  std::wstring fileName;
  std::stringstream memoryStream;
  std::string pdfData;
  std::ofstream fileStream;
  OutputKind outputKind;
  std::ostream* output;
  std::vector<std::streampos> xref;  // entry i: where object i begins; entry 0: the header line
  JTPDFCanvas canvas;
  std::vector<JTPDFDict> pages;  // their /Parent still empty
  bool initialized = false;
  bool finalizing = false;
  bool finalized = false;
  JTPDFDict infoDict;
  int graphicsStateObject = 0;
  // Lines of the object being written. One call of the stream for each line would add a third to
  // the instructions of a small document, and smaller pieces more system calls.
  TextBuffer<32768> lines;
  // Bytes written to the sink. Counted, because a sink that cannot seek does not know its position
  // and asking one that can costs a system call.
  std::streamoff written = 0;
  std::size_t memoryCapacity = 0;  // of memoryStream's buffer
};

#endif  // JTPDF_DOCUMENT_DOCUMENT_H
