#include <gtest/gtest.h>

#include "document/document.h"
#include "support/bytes.h"
#include "support/doc.h"
#include "support/pdf.h"

TEST(JTPDFDocumentWriteCanvas, NothingDrawnStillWritesAForm) {
  Doc doc;
  doc.Init().Form();
  EXPECT_EQ(2, doc.last);
  doc.Form();
  EXPECT_EQ(3, doc.last);
  const Pdf pdf(doc.Finish());
  const std::string body =
      Lines("<<", "/BBox [0.0000 0.0000 0.0000 0.0000]", "/FormType 1", "/Resources", "<<",
            "/ExtGState", "<<", "/GS0 1 0 R", ">>", ">>", "/Subtype /Form", "/Type /XObject",
            "/Length 7", ">>", "stream", "/GS0 gs", "endstream");
  EXPECT_BYTES(body, pdf.Body(2));
  EXPECT_BYTES(body, pdf.Body(3));
}

TEST(JTPDFDocumentWriteCanvas, ImagesStandInTheResources) {
  Doc doc;
  doc.Init().Extent({0, 0, 100, 50, 90}).Draw(12, {10, 20, 30, 40, 0}).Draw(3).Draw(12).Form();
  const std::string upright = "cm 1.0000 0.0000 -0.0000 1.0000 0 0 cm ";
  const std::string turned =
      "q 1 0 0 1 50.0000 25.0000 cm 0.0000 1.0000 -1.0000 0.0000 0 0 cm 100.0000 0 0 50.0000 "
      "-50.0000 -25.0000 cm  /Im";
  const std::string content = Joined("/GS0 gs",
                                     "q 1 0 0 1 25.0000 40.0000 " + upright +
                                         "30.0000 0 0 40.0000 -15.0000 -20.0000 cm  /Im12 Do Q",
                                     turned + "3 Do Q", turned + "12 Do Q");
  EXPECT_BYTES(
      Lines("<<", "/BBox [0.0000 0.0000 100.0000 50.0000]", "/FormType 1", "/Resources", "<<",
            "/ExtGState", "<<", "/GS0 1 0 R", ">>", "/XObject", "<<", "/Im12 12 0 R", "/Im3 3 0 R",
            ">>", ">>", "/Subtype /Form", "/Type /XObject",
            "/Length " + std::to_string(content.size()), ">>", "stream", content, "endstream"),
      Pdf(doc.Finish()).Body(2));
}

TEST(JTPDFDocumentWriteCanvas, EachFormHoldsOnlyWhatWasDrawnSinceTheLast) {
  Doc doc;
  doc.Init().Draw(7).Form().Draw(8).Form();
  const Pdf pdf(doc.Finish());
  EXPECT_EQ(0, Count(pdf.Object(2), "Im8"));
  EXPECT_EQ(0, Count(pdf.Object(3), "Im7"));
  EXPECT_EQ(2, Count(pdf.Object(3), "/Im8 "));
}

TEST(JTPDFDocumentWriteCanvas, EmptiesTheCanvasButForItsExtent) {
  Doc doc;
  doc.Init().Extent({1, 2, 3, 4, 5}).Draw(7).Form();
  EXPECT_TRUE(doc->GetCanvas().empty());
  EXPECT_BYTES("/GS0 gs", doc->GetCanvas().GetContents().Text());
  EXPECT_EQ("[1.0000 2.0000 4.0000 6.0000]", doc->GetCanvas().GetBoundingBox().AsArray());
  doc.Form();
  EXPECT_EQ(1, Count(Pdf(doc.Finish()).Object(3), "/BBox [1.0000 2.0000 4.0000 6.0000]\r\n"));
}

TEST(JTPDFDocumentWriteCanvas, OwnEntriesReplaceThoseOfTheCanvas) {
  Doc doc;
  doc.Init();
  doc->GetCanvas()["/Type"] = "/Other";
  doc->GetCanvas()["/BBox"] = "[]";
  doc->GetCanvas()["/Extra"] = "/Kept";
  doc.Form();
  const std::string object = Pdf(doc.Finish()).Object(2);
  EXPECT_EQ(1, Count(object, "/Type /XObject\r\n")) << object;
  EXPECT_EQ(1, Count(object, "/BBox [0.0000 0.0000 0.0000 0.0000]\r\n")) << object;
  EXPECT_EQ(1, Count(object, "/Extra /Kept\r\n")) << object;
}

TEST(JTPDFDocumentWriteCanvas, BoundingBoxIsInPoints) {
  Doc doc(PDFCoordinateUnitMillimeter);
  doc.Init().Extent({10, 10, 100, 50, 0}).Form();
  EXPECT_EQ(1, Count(Pdf(doc.Finish()).Object(2), "/BBox [28.3465 28.3465 311.8110 170.0787]\r\n"));
}

TEST(JTPDFDocumentWriteCanvas, IsNotClearedWhenTheDocumentIsNotInitialised) {
  Doc doc;
  doc.Draw(7);
  const std::string drawn = doc->GetCanvas().GetContents().Text();
  EXPECT_THROW(doc->WriteCanvas(), std::ios_base::failure);
  EXPECT_BYTES(drawn, doc->GetCanvas().GetContents().Text());
  EXPECT_EQ("7 0 R", doc->GetCanvas()["/Resources/XObject/Im7"]);
  // The graphics state was object 0 then; the form written later names the right one.
  doc.Init().Form();
  EXPECT_EQ(1, Count(Pdf(doc.Finish()).Object(2), "/GS0 1 0 R\r\n"));
}

TEST(JTPDFDocumentWriteCanvas, AfterFinalizeNamesNoGraphicsState) {
  Doc doc;
  doc.Init().Finish();
  doc->GetCanvas()["/Resources/ExtGState/GS0"] = "kept?";
  doc.Form();
  EXPECT_TRUE(doc->GetCanvas().empty());
}

TEST(JTPDFDocumentWritePage, ContentOfForm12Is27Bytes) {
  Doc doc;
  doc.Init().Page(12);
  const std::string content = "q 1 0 0 1 0 0 cm /Fm12 Do Q";
  ASSERT_EQ(27u, content.size());
  EXPECT_BYTES(Lines("2 0 obj", "<<", "/Length 27", ">>", "stream", content, "endstream", "endobj"),
               Pdf(doc.Finish()).Object(2));
}

TEST(JTPDFDocumentWritePage, PageIsExact) {
  Doc doc;
  doc.Init().Page(12, {10, 20, 30, 40, 45}, {0, 0, 595, 842, 0});
  EXPECT_BYTES(
      Lines("3 0 obj", "<<", "/Contents 2 0 R", "/CropBox [10.0000 20.0000 40.0000 60.0000]",
            "/MediaBox [0.0000 0.0000 595.0000 842.0000]", "/Parent 4 0 R", "/Resources", "<<",
            "/ProcSet [/PDF /ImageB /ImageC]", "/XObject", "<<", "/Fm12 12 0 R", ">>", ">>",
            "/Type /Page", "/Group", "<<", "/CS /DeviceRGB /I false /K false /S /Transparency",
            ">>", ">>", "endobj"),
      Pdf(doc.Finish()).Object(3));
}

TEST(JTPDFDocumentWritePage, BoxesAreInPoints) {
  Doc doc(PDFCoordinateUnitInch);
  doc.Init().Page(2, {0, 0, 1, 2, 0}, {1, 1, 1, 2, 0});
  const std::string page = Pdf(doc.Finish()).Object(3);
  EXPECT_EQ(1, Count(page, "/CropBox [0.0000 0.0000 72.0000 144.0000]\r\n")) << page;
  EXPECT_EQ(1, Count(page, "/MediaBox [72.0000 72.0000 144.0000 216.0000]\r\n")) << page;
}

TEST(JTPDFDocumentWritePage, TakesAnyForm) {
  Doc doc;
  doc.Init().Page(-3);
  const Pdf pdf(doc.Finish());
  EXPECT_EQ(1, Count(pdf.Object(2), "q 1 0 0 1 0 0 cm /Fm-3 Do Q\r\n"));
  EXPECT_EQ(1, Count(pdf.Object(3), "/Fm-3 -3 0 R\r\n"));
}

TEST(JTPDFDocumentWritePage, OneFormMayServeSeveralPages) {
  Doc doc;
  doc.Init().Form().Page(2).Page(2);
  const Pdf pdf(doc.Finish());
  EXPECT_EQ(1, Count(pdf.Object(5), "/Contents 3 0 R\r\n"));
  EXPECT_EQ(1, Count(pdf.Object(6), "/Contents 4 0 R\r\n"));
  EXPECT_EQ(1, Count(pdf.Object(5), "/Fm2 2 0 R\r\n"));
  EXPECT_EQ(1, Count(pdf.Object(6), "/Fm2 2 0 R\r\n"));
}

TEST(JTPDFDocumentAddPage, ShowsContentsOfTheHosts) {
  Doc doc(PDFCoordinateUnitInch);
  doc.Init();
  doc->AddPage(7, JTPDFBox(0, 0, 1, 1), JTPDFBox(0, 0, 1, 2));
  doc->SetPageEntry("/Resources/XObject/Im2", "2 0 R");
  doc->AddPage(8, JTPDFBox(0, 0, 1, 1), JTPDFBox(0, 0, 1, 2));
  const Pdf pdf(doc.Finish());
  EXPECT_BYTES(Lines("2 0 obj", "<<", "/Contents 7 0 R", "/CropBox [0.0000 0.0000 72.0000 72.0000]",
                     "/MediaBox [0.0000 0.0000 72.0000 144.0000]", "/Parent 4 0 R", "/Resources",
                     "<<", "/ProcSet [/PDF /ImageB /ImageC]", ">>", "/Type /Page", "/Group", "<<",
                     "/CS /DeviceRGB /I false /K false /S /Transparency", ">>", ">>", "endobj"),
               pdf.Object(2));
  EXPECT_EQ(1, Count(pdf.Object(3), "/Contents 8 0 R\r\n"));
  EXPECT_EQ(1, Count(pdf.Object(3), "/XObject\r\n<<\r\n/Im2 2 0 R\r\n>>\r\n"));
}

TEST(JTPDFDocumentAddPage, IsNotQueuedWhenTheDocumentIsNotInitialised) {
  Doc doc;
  EXPECT_THROW(doc->AddPage(2, JTPDFBox(), JTPDFBox()), std::ios_base::failure);
  EXPECT_BYTES(Doc().Init().Finish(), doc.Init().Finish());
}

TEST(JTPDFDocumentWritePage, IsNotQueuedWhenTheDocumentIsNotInitialised) {
  Doc doc;
  EXPECT_THROW(doc->WritePage(2, JTPDFBox(), JTPDFBox()), std::ios_base::failure);
  EXPECT_BYTES(Doc().Init().Finish(), doc.Init().Finish());
}
