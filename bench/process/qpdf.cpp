// The workloads through qpdf. It has no drawing calls, so shapes are n/a; where a page needs one
// rectangle, its content is put together here.

// Chooses std::shared_ptr for the buffers of its interface.
#define POINTERHOLDER_TRANSITION 4
#include <qpdf/Pipeline.hh>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFObjectHandle.hh>
#include <qpdf/QPDFWriter.hh>
#include <qpdf/QUtil.hh>

#include <memory>

#include "workload.h"

namespace bench {

namespace {

std::string Real(double value) {
  return QUtil::double_to_string(value, 4, false);
}

std::string RectangleContent(const Shape& s) {
  const auto color = [](Rgb c) {
    return Real(c.red / 255.0) + ' ' + Real(c.green / 255.0) + ' ' + Real(c.blue / 255.0);
  };
  return "q " + color(s.fill) + " rg " + color(s.stroke) + " RG " + Real(s.lineWidth) + " w " +
         Real(s.left) + ' ' + Real(s.bottom) + ' ' + Real(s.width) + ' ' + Real(s.height) +
         " re B Q";
}

void AddPage(QPDF& pdf, double width, double height, const std::string& content,
             QPDFObjectHandle resources) {
  QPDFObjectHandle page = QPDFObjectHandle::newDictionary();
  page.replaceKey("/Type", QPDFObjectHandle::newName("/Page"));
  page.replaceKey("/MediaBox",
                  QPDFObjectHandle::newArray(QPDFObjectHandle::Rectangle(0, 0, width, height)));
  page.replaceKey("/Resources", resources);
  page.replaceKey("/Contents", pdf.newStream(content));
  pdf.addPage(pdf.makeIndirectObject(page), false);
}

void Write(QPDFWriter& writer) {
  writer.setCompressStreams(false);
  writer.setDecodeLevel(qpdf_dl_none);
  writer.setStaticID(true);
  writer.write();
}

void WriteToFile(const Job& job, QPDF& pdf) {
  QPDFWriter writer(pdf, job.out);
  Write(writer);
}

void WriteToMemory(const Job& job, QPDF& pdf, bool keep) {
  QPDFWriter writer(pdf);
  writer.setOutputMemory();
  Write(writer);
  const std::shared_ptr<Buffer> bytes = writer.getBufferSharedPointer();
  if (keep) {
    KeepResult(job, reinterpret_cast<const char*>(bytes->getBuffer()), bytes->getSize());
  }
}

void AddJpegs(const Job& job, InputFiles& files, QPDF& pdf) {
  for (std::size_t i = 0; i < job.count; ++i) {
    QPDFObjectHandle image = pdf.newStream();
    QPDFObjectHandle dict = image.getDict();
    dict.replaceKey("/Type", QPDFObjectHandle::newName("/XObject"));
    dict.replaceKey("/Subtype", QPDFObjectHandle::newName("/Image"));
    dict.replaceKey("/Width", QPDFObjectHandle::newInteger(files.Width()));
    dict.replaceKey("/Height", QPDFObjectHandle::newInteger(files.Height()));
    dict.replaceKey("/ColorSpace", QPDFObjectHandle::newName("/DeviceRGB"));
    dict.replaceKey("/BitsPerComponent", QPDFObjectHandle::newInteger(8));
    // The file is read when it is written, not before.
    image.replaceStreamData(
        [&files, i](Pipeline* pipeline) {
          const std::string_view jpeg = files.Read(i);
          pipeline->write(reinterpret_cast<unsigned char const*>(jpeg.data()), jpeg.size());
          pipeline->finish();
        },
        QPDFObjectHandle::newName("/DCTDecode"), QPDFObjectHandle::newNull());
    QPDFObjectHandle images = QPDFObjectHandle::newDictionary();
    images.replaceKey("/Im0", image);
    QPDFObjectHandle resources = QPDFObjectHandle::newDictionary();
    resources.replaceKey("/XObject", images);
    AddPage(pdf, files.Width(), files.Height(),
            "q " + Real(files.Width()) + " 0 0 " + Real(files.Height()) + " 0 0 cm /Im0 Do Q",
            resources);
  }
}

void AddRectanglePage(QPDF& pdf, ShapeSource& source) {
  AddPage(pdf, kPageWidth, kPageHeight, RectangleContent(source.Next()),
          QPDFObjectHandle::newDictionary());
}

}  // namespace

bool Run(const Job& job) {
  ShapeSource source;
  switch (job.workload) {
    case Workload::kJpegFile:
    case Workload::kSmallJpegs:
    case Workload::kJpegMemory: {
      InputFiles files(job);
      QPDF pdf;
      pdf.emptyPDF();
      AddJpegs(job, files, pdf);
      if (job.workload == Workload::kJpegMemory) {
        WriteToMemory(job, pdf, true);
      } else {
        WriteToFile(job, pdf);
      }
      return true;
    }
    case Workload::kPages: {
      QPDF pdf;
      pdf.emptyPDF();
      for (std::size_t i = 0; i < job.count; ++i) AddRectanglePage(pdf, source);
      WriteToFile(job, pdf);
      return true;
    }
    case Workload::kDocuments:
      for (std::size_t i = 0; i < job.count; ++i) {
        QPDF pdf;
        pdf.emptyPDF();
        AddRectanglePage(pdf, source);
        WriteToMemory(job, pdf, IsLast(job, i));
      }
      return true;
    default:
      return false;
  }
}

}  // namespace bench
