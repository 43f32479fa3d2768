/* album_support.c - failures, bytes, colours and boxes, for every part of the album. */
#include <errno.h>
#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "album.h"

void* Resized(void* memory, size_t size) {
  void* resized = realloc(memory, size);
  if (resized == NULL) {
    fprintf(stderr, "album: out of memory (%zu bytes)\n", size);
    exit(EXIT_FAILURE);
  }
  return resized;
}

void Append(Bytes* bytes, const void* data, size_t size) {
  if (size == 0) return;
  bytes->data = Resized(bytes->data, bytes->size + size);
  memcpy(bytes->data + bytes->size, data, size);
  bytes->size += size;
}

bool Succeeded(int32_t code, const char* call, const char* subject) {
  if (code == 0) return true;
  fprintf(stderr, "album: %s: %s failed: %s\n", subject, call,
          code > 0 ? strerror(code) : "the document refused it");
  return false;
}

bool FileFailed(const char* path, const char* advice) {
  fprintf(stderr, "album: %s: %s%s\n", path, strerror(errno), advice);
  return false;
}

static unsigned char Between(unsigned char from, unsigned char to, double part) {
  return (unsigned char)(from + (to - from) * part + 0.5);
}

JTPDFRGBColor Blend(JTPDFRGBColor from, JTPDFRGBColor to, double part) {
  JTPDFRGBColor color = {Between(from.red, to.red, part), Between(from.green, to.green, part),
                         Between(from.blue, to.blue, part), 255};
  return color;
}

JTPDFRGBColor Rainbow(double hue) {
  JTPDFRGBColor color = {(unsigned char)(140 + 110 * cos(2 * kPi * hue)),
                         (unsigned char)(120 + 90 * cos(2 * kPi * (hue - 0.36))),
                         (unsigned char)(140 + 110 * cos(2 * kPi * (hue - 0.64))), 255};
  return color;
}

JTPDFRect Box(double left, double bottom, double width, double height) {
  JTPDFRect box = {left, bottom, width, height, 0};
  return box;
}

JTPDFRect Centered(double x, double y, double width, double height, double angle) {
  JTPDFRect box = {x - width / 2, y - height / 2, width, height, angle};
  return box;
}
