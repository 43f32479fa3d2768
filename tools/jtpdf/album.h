// album.h - the plan of a PDF: what its pages will be.
//
// Every input is planned before anything is written. Planning reads headers only. It finds nearly
// everything that can be wrong before the first byte is written, tells how many pages there will
// be, and finds the images that are given twice.
#ifndef JTPDF_TOOL_ALBUM_H
#define JTPDF_TOOL_ALBUM_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "folder.h"
#include "image.h"
#include "image_source.h"
#include "input_list.h"
#include "layout.h"
#include "options.h"

namespace pictures::tool {

// One picture on a page to be.
struct PagePlan {
  size_t input = 0;
  ImagePlan image;
  PageLayout layout;
  size_t sheet = 0;   // which page of the PDF it is on: its own number, or one of several together
  size_t sameAs = 0;  // the first page with the same image: its own number for most
};

// An input that cannot be used, or a page of one.
struct Failure {
  std::string name;
  std::string reason;
};

struct AlbumPlan {
  std::vector<Input> inputs;
  std::vector<ImageSource> held;         // of each input: its bytes, or nothing: open it again
  std::vector<FileIdentity> identities;  // of each input, as it was planned
  std::vector<PagePlan> pages;
  std::vector<PassedOver> passedOver;
  std::vector<Failure> failures;
};

AlbumPlan PlanAlbum(std::vector<Input> inputs, const Options& options);

// How many pages the PDF will have.
size_t SheetCount(const AlbumPlan& plan);

// The input that is this file, or null.
const Input* FindInput(const AlbumPlan& plan, uint64_t device, uint64_t inode);

// The bytes of an input, as they were planned; throws an ImageError where they are no longer.
ImageSource OpenInput(const AlbumPlan& plan, size_t input, bool touch);

// What messages call the page: its input's name, and where it is one of several, which.
std::string PageName(const AlbumPlan& plan, const PagePlan& page);

}  // namespace pictures::tool

#endif  // JTPDF_TOOL_ALBUM_H
