/* system_faults.c - a system that fails in the ways that tests cannot bring about otherwise: loaded
 * before the C library, it does what the words in FAULTS say, and logs calls to the file
 * FAULTS_LOG.
 *
 *   no-tmpfile      there are no files without a name
 *   no-proc         /proc is not mounted
 *   no-link         there are no links
 *   short-writes    a write takes 1,000 bytes at most
 *   interrupts      every other read and write is interrupted by a signal
 *   read-fails      reading a file fails
 *   fsync-fails, close-fails (of a copied descriptor), rename-fails
 *   swap            a new hidden file's name is taken over by a link to the file "victim" */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/uio.h>
#include <unistd.h>

#define REAL(name) ((__typeof__(&name))dlsym(RTLD_NEXT, #name))

static int copied = -1;

static int faulty(const char* word) {
  const char* words = getenv("FAULTS");
  return words != NULL && strstr(words, word) != NULL;
}

static void record(const char* call) {
  const char* name = getenv("FAULTS_LOG");
  FILE* log = name != NULL ? fopen(name, "a") : NULL;
  if (log == NULL) return;
  fprintf(log, "%s\n", call);
  fclose(log);
}

static int fail(int code) {
  errno = code;
  return -1;
}

static int opened(const char* path, int flags, int descriptor) {
  if ((flags & (O_CREAT | O_EXCL)) == (O_CREAT | O_EXCL) && descriptor >= 0 && faulty("swap")) {
    unlink(path);
    if (symlink("victim", path) != 0) abort();
  }
  return descriptor;
}

int open(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = va_arg(arguments, mode_t);
  va_end(arguments);
  if ((flags & O_TMPFILE) == O_TMPFILE && faulty("no-tmpfile")) return fail(EOPNOTSUPP);
  return opened(path, flags, REAL(open)(path, flags, mode));
}

int open64(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = va_arg(arguments, mode_t);
  va_end(arguments);
  return open(path, flags, mode);
}

int access(const char* path, int mode) {
  if (faulty("no-proc") && strncmp(path, "/proc/", 6) == 0) return fail(ENOENT);
  return REAL(access)(path, mode);
}

int linkat(int from, const char* path, int to, const char* name, int flags) {
  if (faulty("no-link")) return fail(EPERM);
  return REAL(linkat)(from, path, to, name, flags);
}

int rename(const char* from, const char* to) {
  record("rename");
  return faulty("rename-fails") ? fail(EIO) : REAL(rename)(from, to);
}

int fsync(int descriptor) {
  record("fsync");
  return faulty("fsync-fails") ? fail(EIO) : REAL(fsync)(descriptor);
}

int dup(int descriptor) {
  return copied = REAL(dup)(descriptor);
}

int close(int descriptor) {
  const int code = REAL(close)(descriptor);
  if (descriptor != copied) return code;
  copied = -1;
  return faulty("close-fails") ? fail(EDQUOT) : code;
}

ssize_t read(int descriptor, void* data, size_t size) {
  static int calls = 0;
  if (faulty("interrupts") && ++calls % 2 == 1) return fail(EINTR);
  return faulty("read-fails") ? fail(EIO) : REAL(read)(descriptor, data, size);
}

ssize_t write(int descriptor, const void* data, size_t size) {
  static int calls = 0;
  if (descriptor == STDERR_FILENO) return REAL(write)(descriptor, data, size);
  if (faulty("interrupts") && ++calls % 2 == 1) return fail(EINTR);
  return REAL(write)(descriptor, data, faulty("short-writes") && size > 1000 ? 1000 : size);
}
