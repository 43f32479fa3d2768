// What the golden documents draw, a function for each name in golden_documents.cpp.

#ifndef JTPDF_TESTS_GOLDEN_DRAWINGS_H
#define JTPDF_TESTS_GOLDEN_DRAWINGS_H

#include "host.h"

namespace golden {

// page_documents.cpp: the page tree
void NoPage(Host& host);
void OnePage(Host& host);
void NumberedPages(Host& host, int count);

// image_documents.cpp
void Images(Host& host);
void UnknownEnumerations(Host& host);
void Jpeg2000(Host& host);
void Jpeg2000WithAlpha(Host& host);

// drawing_documents.cpp
void Rectangles(Host& host);
void Circles(Host& host);
void Numbers(Host& host);
void Canvas(Host& host);

// text_documents.cpp
void Texts(Host& host);
void Dictionaries(Host& host);
void UnclosedDictionary(Host& host);

// pixels_document.cpp: every kind of drawing where a reader's rendering is compared
void Pixels(Host& host);

// open_documents.cpp
void OpenObjects(Host& host);
void Bookmarks(Host& host);

// everything_document.cpp
void Everything(Host& host);

// generated_document.cpp
void Generated(Host& host, unsigned seed);

}  // namespace golden

#endif  // JTPDF_TESTS_GOLDEN_DRAWINGS_H
