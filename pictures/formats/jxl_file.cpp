#include "formats/jxl_file.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <utility>

#include "formats/icc.h"
#include "formats/jxl_library.h"

namespace pictures {
namespace {

struct DamagedJxl : Undecodable {
  DamagedJxl() : Undecodable("libjxl finds it damaged") {}
};

}  // namespace

// A walk through what happens while the file is decoded.
class JxlEvents {
 public:
  JxlEvents(Bytes file, int wanted) : decoder_(Jxl().JxlDecoderCreate(nullptr)) {
    if (!decoder_) throw std::bad_alloc();
    Require(Jxl().JxlDecoderSubscribeEvents(Get(), wanted));
    Require(Jxl().JxlDecoderSetKeepOrientation(Get(), JXL_TRUE));
    Require(Jxl().JxlDecoderSetUnpremultiplyAlpha(Get(), JXL_TRUE));
    Require(Jxl().JxlDecoderSetDecompressBoxes(Get(), JXL_TRUE));
    // The input is never closed: of a file that is cut off libjxl would print a word of its own.
    Require(Jxl().JxlDecoderSetInput(Get(), file.data(), file.size()));
  }

  // The next thing that happens; JXL_DEC_SUCCESS at the end.
  JxlDecoderStatus Next() {
    const JxlDecoderStatus status = Jxl().JxlDecoderProcessInput(Get());
    if (status == JXL_DEC_NEED_MORE_INPUT) throw CutOff();
    if (status == JXL_DEC_ERROR) throw DamagedJxl();
    return status;
  }
  JxlDecoder* Get() const { return decoder_.get(); }
  static void Require(JxlDecoderStatus status) {
    if (status != JXL_DEC_SUCCESS) throw DamagedJxl();
  }

 private:
  struct Destroy {
    void operator()(JxlDecoder* decoder) const { Jxl().JxlDecoderDestroy(decoder); }
  };
  std::unique_ptr<JxlDecoder, Destroy> decoder_;
};

namespace {

bool HasInks(JxlDecoder* decoder, const JxlBasicInfo& info) {
  for (uint32_t i = 0; i < info.num_extra_channels; ++i) {
    JxlExtraChannelInfo channel;
    if (Jxl().JxlDecoderGetExtraChannelInfo(decoder, i, &channel) == JXL_DEC_SUCCESS &&
        channel.type == JXL_CHANNEL_BLACK) {
      return true;
    }
  }
  return false;
}

bool IsSrgb(JxlDecoder* decoder) {
  JxlColorEncoding colours;
  if (Jxl().JxlDecoderGetColorAsEncodedProfile(decoder, nullptr, JXL_COLOR_PROFILE_TARGET_DATA,
                                               &colours) != JXL_DEC_SUCCESS) {
    return false;
  }
  return colours.transfer_function == JXL_TRANSFER_FUNCTION_SRGB &&
         colours.white_point == JXL_WHITE_POINT_D65 &&
         (colours.color_space == JXL_COLOR_SPACE_GRAY ||
          (colours.color_space == JXL_COLOR_SPACE_RGB && colours.primaries == JXL_PRIMARIES_SRGB));
}

}  // namespace

JxlFacts ReadJxlFacts(Bytes file) {
  JxlFacts facts;
  JxlEvents events(file, JXL_DEC_BASIC_INFO | JXL_DEC_FRAME | JXL_DEC_JPEG_RECONSTRUCTION);
  for (;;) {
    switch (events.Next()) {
      case JXL_DEC_BASIC_INFO:
        JxlEvents::Require(Jxl().JxlDecoderGetBasicInfo(events.Get(), &facts.info));
        facts.inks = HasInks(events.Get(), facts.info);
        break;
      case JXL_DEC_FRAME:
        ++facts.frames;
        break;
      case JXL_DEC_JPEG_RECONSTRUCTION:
        facts.jpeg = true;
        break;
      case JXL_DEC_SUCCESS:
        if (facts.frames == 0) throw DamagedJxl();
        return facts;
      default:
        throw DamagedJxl();
    }
  }
}

ExifFacts ReadJxlExif(Bytes file) {
  JxlEvents events(file, JXL_DEC_BOX);
  JxlBoxType type = {};
  while (std::memcmp(type, "Exif", sizeof type) != 0) {
    if (Jxl().JxlDecoderProcessInput(events.Get()) != JXL_DEC_BOX) return {};
    JxlEvents::Require(Jxl().JxlDecoderGetBoxType(events.Get(), type, JXL_TRUE));
  }
  Buffer box(size_t{64} << 10);  // what is looked for stands at its begin
  JxlEvents::Require(Jxl().JxlDecoderSetBoxBuffer(events.Get(), box.Data(), box.Size()));
  Jxl().JxlDecoderProcessInput(events.Get());
  box.Shrink(box.Size() - Jxl().JxlDecoderReleaseBoxBuffer(events.Get()));
  if (box.Size() < 4) return {};
  const uint64_t begin = uint64_t{4} + Be32(box.Data());
  return ReadExif(Slice(box.View(), begin, box.Size() - std::min<uint64_t>(begin, box.Size())));
}

Buffer ReadJxlProfile(Bytes file) {
  JxlEvents events(file, JXL_DEC_COLOR_ENCODING);
  if (events.Next() != JXL_DEC_COLOR_ENCODING) throw DamagedJxl();
  if (IsSrgb(events.Get())) return {};
  size_t size = 0;
  constexpr auto kTarget = JXL_COLOR_PROFILE_TARGET_DATA;
  if (Jxl().JxlDecoderGetICCProfileSize(events.Get(), nullptr, kTarget, &size) != JXL_DEC_SUCCESS ||
      size > kMostProfile) {
    return {};
  }
  Buffer profile(size);
  JxlEvents::Require(Jxl().JxlDecoderGetColorAsICCProfile(events.Get(), nullptr, kTarget,
                                                          profile.Data(), profile.Size()));
  return profile;
}

JxlFrames::JxlFrames(Bytes file) : events_(new JxlEvents(file, JXL_DEC_FULL_IMAGE)) {}
JxlFrames::~JxlFrames() = default;

void JxlFrames::DecodeNext(Raster* pixels) {
  const JxlPixelFormat format{static_cast<uint32_t>(pixels->channels),
                              pixels->bits == 8 ? JXL_TYPE_UINT8 : JXL_TYPE_UINT16, JXL_BIG_ENDIAN,
                              0};
  for (;;) {
    const JxlDecoderStatus status = events_->Next();
    if (status == JXL_DEC_FULL_IMAGE) return;
    if (status != JXL_DEC_NEED_IMAGE_OUT_BUFFER) throw DamagedJxl();
    size_t size = 0;
    JxlEvents::Require(Jxl().JxlDecoderImageOutBufferSize(events_->Get(), &format, &size));
    if (size != pixels->bytes.Size()) throw DamagedJxl();
    JxlEvents::Require(
        Jxl().JxlDecoderSetImageOutBuffer(events_->Get(), &format, pixels->bytes.Data(), size));
  }
}

Buffer ReconstructJpeg(Bytes file) {
  Buffer jpeg(file.size() + file.size() / 2);
  size_t unused = jpeg.Size();
  JxlEvents events(file, JXL_DEC_JPEG_RECONSTRUCTION | JXL_DEC_FULL_IMAGE);
  for (;;) {
    const JxlDecoderStatus status = events.Next();
    if (status == JXL_DEC_JPEG_NEED_MORE_OUTPUT) {
      unused = Jxl().JxlDecoderReleaseJPEGBuffer(events.Get());
      unused += jpeg.Size();
      jpeg.Double();
    } else if (status == JXL_DEC_FULL_IMAGE) {
      jpeg.Shrink(jpeg.Size() - Jxl().JxlDecoderReleaseJPEGBuffer(events.Get()));
      return jpeg;
    } else if (status != JXL_DEC_JPEG_RECONSTRUCTION) {
      throw DamagedJxl();
    }
    JxlEvents::Require(
        Jxl().JxlDecoderSetJPEGBuffer(events.Get(), jpeg.Data() + jpeg.Size() - unused, unused));
  }
}

}  // namespace pictures
