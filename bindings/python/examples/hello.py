import jtpdf
with jtpdf.Document("hello.pdf", unit="mm") as doc:
    doc.fill_rectangle((45, 110, 120, 80, 15), (214, 40, 57))
    doc.add_page((0, 0, 210, 297))
