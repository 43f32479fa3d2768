#include "formats/jpeg_recoding.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "formats/jpeg_failure.h"

namespace pictures {
namespace {

// What libjpeg may take for coefficients; more is an error of its own.
constexpr long kMostMemory = 2'000'000'000;

// A decompressor that ends with its scope; what jumps over it calls End.
struct JpegReader {
  jpeg_decompress_struct jpeg;
  jpeg_progress_mgr progress;

  void Begin(Bytes bytes, JpegFailure* failure) {
    jpeg.err = JumpOnErrors(failure);
    jpeg_create_decompress(&jpeg);
    progress = LimitedScans();
    jpeg.progress = &progress;
    jpeg.mem->max_memory_to_use = kMostMemory;
    jpeg_mem_src(&jpeg, bytes.data(), bytes.size());
  }
  jvirt_barray_ptr* Read() {
    jpeg_read_header(&jpeg, TRUE);
    return jpeg_read_coefficients(&jpeg);
  }
};

// Where libjpeg writes: memory of a fixed size, since a result that does not fit is not wanted.
// (libjpeg's own memory destination frees its buffer before it reports that it has no more.)
struct Target {
  jpeg_destination_mgr manager;  // first, so that libjpeg's pointer to it is a pointer to this
  uint8_t* begin;
  size_t size;

  void Begin(Buffer* to) {
    begin = to->Data();
    size = to->Size();
    manager.init_destination = Start;
    manager.empty_output_buffer = Overflow;
    manager.term_destination = [](j_compress_ptr) {};
  }
  size_t Written() const { return size - manager.free_in_buffer; }

 private:
  static void Start(j_compress_ptr jpeg) {
    auto* target = reinterpret_cast<Target*>(jpeg->dest);
    target->manager.next_output_byte = target->begin;
    target->manager.free_in_buffer = target->size;
  }
  static boolean Overflow(j_compress_ptr jpeg) {
    FailWith(reinterpret_cast<JpegFailure*>(jpeg->err), "too long");
  }
};

// Codes the coefficients anew and cuts `to`, which has the JPEG's size, to the result; false where
// that is no smaller, or cannot be, or the JPEG is damaged.
bool Write(Bytes jpeg, bool progressive, Buffer* to) {
  JpegFailure failure = {};
  JpegReader source = {};
  Target target = {};
  jpeg_compress_struct out = {};
  out.err = JumpOnErrors(&failure);
  if (setjmp(failure.back) != 0) {
    jpeg_destroy_compress(&out);
    jpeg_destroy_decompress(&source.jpeg);
    return false;
  }
  jpeg_create_compress(&out);
  out.mem->max_memory_to_use = kMostMemory;
  source.Begin(jpeg, &failure);
  jvirt_barray_ptr* coefficients = source.Read();
  if (failure.manager.num_warnings > 0) FailWith(&failure, "damaged");  // writing forgets them
  jpeg_copy_critical_parameters(&source.jpeg, &out);
  out.optimize_coding = TRUE;
  if (progressive) jpeg_simple_progression(&out);
  target.Begin(to);
  out.dest = &target.manager;
  jpeg_write_coefficients(&out, coefficients);
  jpeg_finish_compress(&out);
  jpeg_destroy_compress(&out);
  jpeg_finish_decompress(&source.jpeg);
  jpeg_destroy_decompress(&source.jpeg);
  to->Shrink(target.Written());
  return true;
}

bool SameComponents(const jpeg_decompress_struct& a, const jpeg_decompress_struct& b) {
  if (a.image_width != b.image_width || a.image_height != b.image_height ||
      a.num_components != b.num_components || a.jpeg_color_space != b.jpeg_color_space) {
    return false;
  }
  for (int c = 0; c < a.num_components; ++c) {
    const jpeg_component_info &of = a.comp_info[c], &other = b.comp_info[c];
    if (of.h_samp_factor != other.h_samp_factor || of.v_samp_factor != other.v_samp_factor ||
        of.width_in_blocks != other.width_in_blocks ||
        of.height_in_blocks != other.height_in_blocks || of.quant_table == nullptr ||
        other.quant_table == nullptr ||
        !std::equal(std::begin(of.quant_table->quantval), std::end(of.quant_table->quantval),
                    std::begin(other.quant_table->quantval))) {
      return false;
    }
  }
  return true;
}

bool SameRows(JpegReader* a, jvirt_barray_ptr ofA, JpegReader* b, jvirt_barray_ptr ofB,
              int component) {
  const jpeg_component_info& info = a->jpeg.comp_info[component];
  const auto common = [](JpegReader* source) {
    return reinterpret_cast<j_common_ptr>(&source->jpeg);
  };
  for (JDIMENSION y = 0; y < info.height_in_blocks; ++y) {
    JBLOCKARRAY rowA = a->jpeg.mem->access_virt_barray(common(a), ofA, y, 1, FALSE);
    JBLOCKARRAY rowB = b->jpeg.mem->access_virt_barray(common(b), ofB, y, 1, FALSE);
    if (std::memcmp(rowA[0], rowB[0], sizeof(JBLOCK) * info.width_in_blocks) != 0) return false;
  }
  return true;
}

// Whether two JPEGs have the same coefficients, read in the same way.
bool SameCoefficients(Bytes one, Bytes other) {
  JpegFailure failure = {};
  JpegReader a = {}, b = {};
  if (setjmp(failure.back) != 0) {
    jpeg_destroy_decompress(&a.jpeg);
    jpeg_destroy_decompress(&b.jpeg);
    return false;
  }
  a.Begin(one, &failure);
  b.Begin(other, &failure);
  jvirt_barray_ptr* ofA = a.Read();
  jvirt_barray_ptr* ofB = b.Read();
  bool same = SameComponents(a.jpeg, b.jpeg);
  for (int c = 0; same && c < a.jpeg.num_components; ++c)
    same = SameRows(&a, ofA[c], &b, ofB[c], c);
  jpeg_destroy_decompress(&a.jpeg);
  jpeg_destroy_decompress(&b.jpeg);
  return same;
}

}  // namespace

Buffer RecodeJpeg(Bytes jpeg) {
  Buffer smallest;
  for (const bool progressive : {false, true}) {
    Buffer recoded(smallest.Empty() ? jpeg.size() : smallest.Size());
    if (Write(jpeg, progressive, &recoded)) smallest = std::move(recoded);
  }
  if (smallest.Empty() || !SameCoefficients(jpeg, smallest.View())) return {};
  return smallest;
}

}  // namespace pictures
