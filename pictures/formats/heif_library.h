// heif_library.h - the functions of libheif that are used.
#ifndef JTPDF_PICTURES_HEIF_LIBRARY_H
#define JTPDF_PICTURES_HEIF_LIBRARY_H

#include <libheif/heif.h>

#include "late_library.h"

namespace pictures {

#ifdef JTPDF_HEIF_LIBRARY
#define JTPDF_HEIF_FUNCTION JTPDF_LATE_FUNCTION
#else
#define JTPDF_HEIF_FUNCTION JTPDF_LINKED_FUNCTION
#endif

struct HeifLibrary {
#ifdef JTPDF_HEIF_LIBRARY
  LateLibrary library{JTPDF_HEIF_LIBRARY};
#endif
  JTPDF_HEIF_FUNCTION(heif_context_alloc);
  JTPDF_HEIF_FUNCTION(heif_context_free);
  JTPDF_HEIF_FUNCTION(heif_context_get_image_handle);
  JTPDF_HEIF_FUNCTION(heif_context_get_list_of_top_level_image_IDs);
  JTPDF_HEIF_FUNCTION(heif_context_get_number_of_top_level_images);
  JTPDF_HEIF_FUNCTION(heif_context_get_primary_image_ID);
  JTPDF_HEIF_FUNCTION(heif_context_read_from_memory_without_copy);
  JTPDF_HEIF_FUNCTION(heif_context_set_max_decoding_threads);
  JTPDF_HEIF_FUNCTION(heif_context_set_maximum_image_size_limit);
  JTPDF_HEIF_FUNCTION(heif_decode_image);
  JTPDF_HEIF_FUNCTION(heif_image_get_bits_per_pixel_range);
  JTPDF_HEIF_FUNCTION(heif_image_get_height);
  JTPDF_HEIF_FUNCTION(heif_image_get_plane_readonly);
  JTPDF_HEIF_FUNCTION(heif_image_get_width);
  JTPDF_HEIF_FUNCTION(heif_image_handle_get_color_profile_type);
  JTPDF_HEIF_FUNCTION(heif_image_handle_get_height);
  JTPDF_HEIF_FUNCTION(heif_image_handle_get_list_of_metadata_block_IDs);
  JTPDF_HEIF_FUNCTION(heif_image_handle_get_luma_bits_per_pixel);
  JTPDF_HEIF_FUNCTION(heif_image_handle_get_metadata);
  JTPDF_HEIF_FUNCTION(heif_image_handle_get_metadata_size);
  JTPDF_HEIF_FUNCTION(heif_image_handle_get_nclx_color_profile);
  JTPDF_HEIF_FUNCTION(heif_image_handle_get_raw_color_profile);
  JTPDF_HEIF_FUNCTION(heif_image_handle_get_raw_color_profile_size);
  JTPDF_HEIF_FUNCTION(heif_image_handle_get_width);
  JTPDF_HEIF_FUNCTION(heif_image_handle_has_alpha_channel);
  JTPDF_HEIF_FUNCTION(heif_image_handle_is_premultiplied_alpha);
  JTPDF_HEIF_FUNCTION(heif_image_handle_release);
  JTPDF_HEIF_FUNCTION(heif_image_release);
  JTPDF_HEIF_FUNCTION(heif_nclx_color_profile_free);
};

// Throws an ImageError where it cannot be loaded.
inline const HeifLibrary& Heif() {
  static const HeifLibrary library;
  return library;
}

}  // namespace pictures

#endif  // JTPDF_PICTURES_HEIF_LIBRARY_H
