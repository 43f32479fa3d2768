// page_tree - the queued pages and the tree above them (ISO 32000-1, 7.7.3).
#ifndef JTPDF_DOCUMENT_PAGE_TREE_H
#define JTPDF_DOCUMENT_PAGE_TREE_H

#include "document/pages.h"
#include "output/object_writer.h"

// Writes the pages and the tree, the root last; returns the root's number.
int WritePageTree(ObjectWriter& out, const PageQueue& queue);

#endif  // JTPDF_DOCUMENT_PAGE_TREE_H
