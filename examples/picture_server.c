/* picture_server.c - answers with PDFs from memory: a picture comes in by POST, its page goes out.
 *
 *     picture_server PORT [REQUESTS]
 *     curl --data-binary @photo.jpg http://127.0.0.1:PORT/ > photo.pdf
 *
 * Port 0 takes a free one, which is printed. Nothing touches a disk, one answer is made after the
 * other, and REQUESTS answers are made before the program ends. A picture that cannot be used is
 * answered with 422 and the reason.
 */
/* NOLINTNEXTLINE(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp): the C library's name */
#define _POSIX_C_SOURCE 200809L
#include <arpa/inet.h>
#include <errno.h>
#include <jtpdf/pictures.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <strings.h>
#include <sys/socket.h>
#include <unistd.h>

/* The bytes of the request's body that are still to come. */
typedef struct Body {
  FILE* stream;
  size_t left;
} Body;

static int32_t ReadBody(void* context, char* buffer, size_t size, size_t* count) {
  Body* body = context;
  const size_t wanted = size < body->left ? size : body->left;
  *count = fread(buffer, 1, wanted, body->stream);
  body->left -= *count;
  return *count == wanted ? 0 : EIO;
}

/* Makes the document; gives it, or null with the reason in *error. */
static JTPDFDocument* MakePdf(Body* body, JTPDFPictureError* error) {
  const JTPDFPictureLimits limits = {.maxPixels = 100000000, .maxBytes = 64 << 20};
  const JTPDFPicturePage page = {.page = "A4", .border = "1cm", .autoOrient = true};
  JTPDFPicture* picture = JTPDFOpenPictureStream(ReadBody, body, &limits, error);
  if (picture == NULL) return NULL;
  JTPDFDocument* doc = TryCreateMemoryPdfDoc(PDFCoordinateUnitPoint);
  JTPDFPictureWriter* writer = NULL;
  bool done = doc != NULL && InitPdfDoc(doc) == 0;
  if (done) writer = JTPDFCreatePictureWriter(doc, PDFCoordinateUnitPoint, 6, error);
  done = done && writer != NULL &&
         JTPDFAddPicturePage(writer, picture, 0, &page, NULL, error) == 0 &&
         FinalizePdfDoc(doc, NULL) == 0;
  JTPDFDestroyPictureWriter(writer);
  JTPDFClosePicture(picture);
  if (done) return doc;
  DestroyPdfDoc(doc);
  return NULL;
}

static void Answer(FILE* in, FILE* out) {
  char line[1024];
  Body body = {in, 0};
  const bool isPost = fgets(line, sizeof line, in) != NULL && strncmp(line, "POST ", 5) == 0;
  while (fgets(line, sizeof line, in) != NULL && strcmp(line, "\r\n") != 0) {
    if (strncasecmp(line, "Content-Length:", 15) == 0) body.left = strtoul(line + 15, NULL, 10);
  }
  JTPDFPictureError error = {.message = "send a picture by POST"};
  JTPDFDocument* doc = isPost ? MakePdf(&body, &error) : NULL;
  for (size_t count = 1; count > 0 && ReadBody(&body, line, sizeof line, &count) == 0;) {
    /* a client that is still sending would not hear the answer */
  }
  const char* data = doc != NULL ? GetPdfData(doc) : error.message;
  const size_t size = doc != NULL ? GetPdfDataSize(doc) : strlen(error.message);
  fprintf(out,
          "HTTP/1.1 %s\r\nContent-Type: %s\r\nContent-Length: %zu\r\nConnection: close\r\n\r\n",
          doc != NULL ? "200 OK" : "422 Unprocessable Content",
          doc != NULL ? "application/pdf" : "text/plain; charset=utf-8", size);
  fwrite(data, 1, size, out);
  DestroyPdfDoc(doc);
}

int main(int argc, char** argv) {
  if (argc < 2 || argc > 3) {
    fprintf(stderr, "usage: picture_server PORT [REQUESTS]\n");
    return 2;
  }
  long requests = argc == 3 ? strtol(argv[2], NULL, 10) : -1;
  struct sockaddr_in address = {.sin_family = AF_INET,
                                .sin_port = htons((uint16_t)strtol(argv[1], NULL, 10)),
                                .sin_addr = {.s_addr = htonl(INADDR_LOOPBACK)}};
  socklen_t length = sizeof address;
  const int server = socket(AF_INET, SOCK_STREAM, 0);
  if (server < 0 || bind(server, (struct sockaddr*)&address, length) != 0 ||
      listen(server, 8) != 0 || getsockname(server, (struct sockaddr*)&address, &length) != 0) {
    perror("picture_server");
    return 1;
  }
  printf("%d\n", ntohs(address.sin_port));
  fflush(stdout);
  for (; requests != 0; --requests) {
    const int client = accept(server, NULL, NULL);
    FILE* in = client >= 0 ? fdopen(client, "rb") : NULL;
    FILE* out = in != NULL ? fdopen(dup(client), "wb") : NULL;
    if (out != NULL) {
      Answer(in, out);
      fclose(out);
    }
    if (in != NULL) fclose(in);
  }
  close(server);
  return 0;
}
