#!/usr/bin/env python3
"""headers_test.py: how the site's command reads a header, docs/site/headers.py and reference.py."""

import pathlib
import sys
import unittest
from typing import List, Tuple

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "docs/site"))
import headers  # noqa: E402
import reference  # noqa: E402


def read(text: str, is_cpp: bool = False) -> List[Tuple[str, str, str]]:
    return [(item.kind, item.code, item.text) for item in headers.read(text, is_cpp)]


class Headers(unittest.TestCase):
    def test_a_comment_describes_the_declaration_behind_it(self) -> None:
        self.assertEqual(read("/* Opens\n * it. */\nEXPORT int Open(int a,\n         int b);\n"),
                         [("function", "EXPORT int Open(int a, int b)", "Opens\nit.")])

    def test_the_next_declaration_shares_it(self) -> None:
        first, second, third = headers.read("/* Both. */\nint A(void);\nint B(void);\n\nint C(void);\n",
                                            False)
        self.assertEqual([first.shares, second.shares, third.shares], [False, True, False])

    def test_a_comment_behind_a_declaration_describes_that(self) -> None:
        self.assertEqual(read("/* Units. */\nextern const double in; /* 72 */\nextern const double pt;\n"),
                         [("remark", "", "Units."), ("variable", "const double in", "72"),
                          ("variable", "const double pt", "")])

    def test_what_stands_behind_a_declaration_is_for_that_one_alone(self) -> None:
        items = headers.read("enum class E : int {\n  a,  // first\n  b,\n  c\n};\n", True)[0].members
        self.assertEqual([(one.code, one.text, one.shares) for one in items],
                         [("a", "first", False), ("b", "", False), ("c", "", True)])

    def test_a_comment_before_an_empty_line_stands_for_itself(self) -> None:
        self.assertEqual(read("/* About all. */\n\nint A(void);\n"),
                         [("remark", "", "About all."), ("function", "int A(void)", "")])

    def test_a_rule_begins_a_section(self) -> None:
        self.assertEqual(read("/* ---- Writers: all ---------\n *\n * Between. */\n\nint A(void);\n")[0],
                         ("section", "Writers: all", "Between."))

    def test_only_the_branches_of_the_language_count(self) -> None:
        text = "#ifdef __cplusplus\nclass T;\n#else\ntypedef struct T T;\n#endif\n"
        self.assertEqual(read(text), [("struct", "typedef struct T T", "")])
        self.assertEqual(read(text, True), [("class", "class T", "")])

    def test_a_language_that_is_too_old_is_none_of_ours(self) -> None:
        text = "#ifndef X\n#if __cplusplus < 201703L\n#error old\n#else\nint A();\n#endif\n#endif\n"
        self.assertEqual(read(text, True), [("function", "int A()", "")])

    def test_an_enumeration_of_a_fixed_type_is_one_in_c(self) -> None:
        item, = headers.read("/* Kind. */\ntypedef int32_t Kind;\nenum {\n  kA = 0, /* first */\n"
                             "  kB = 1  /* last */\n};\n", False)
        self.assertEqual((item.kind, item.code, item.text), ("enum", "enum Kind", "Kind."))
        self.assertEqual([(one.code, one.text) for one in item.members],
                         [("kA = 0", "first"), ("kB = 1", "last")])

    def test_bodies_and_what_is_private_are_left_out(self) -> None:
        item, = headers.read("""
class [[nodiscard]] Box {
 public:
  explicit Box(int n, const Tags& tags = {}) noexcept : n_(n) { Check(); }
  int n() const { return n_; }  // how many

 private:
  int n_ = 0;  // hidden
};
namespace detail {
int helper();
}  // namespace detail
""", True)[:1]
        self.assertEqual([(one.code, one.text) for one in item.members],
                         [("explicit Box(int n, const Tags& tags = {}) noexcept", ""),
                          ("int n() const", "how many")])


class Reference(unittest.TestCase):
    def page(self, text: str) -> str:
        items = headers.read(text, False)
        page = reference.Page("c", reference.links(items, "c"))
        page.header("x.h", items)
        return "\n".join(page.lines)

    def test_names_are_linked_and_marks_are_not_taken_for_markup(self) -> None:
        page = self.page("/* x.h - writes. */\n\n/* Calls Open for *p, a_b_ and |c|. */\nint Close(int p);\n"
                         "\n/* Opens. */\nint Open(int p);\n")
        self.assertIn(r"\ :c:type:`Open <Open>`\ ", page)
        self.assertIn(r"for \*p, a\_b\_ and \|c\|.", page)

    def test_names_of_pdf_and_paths_of_them_are_code(self) -> None:
        page = self.page("/* x.h - writes. */\n\n/* Sets /A/B/F1, not 1/2. */\nint A(void);\n")
        self.assertIn("Sets \\ ``/A/B/F1``\\ , not 1/2.", page)

    def test_a_type_of_functions_has_its_name(self) -> None:
        items = headers.read("/* Takes bytes. */\ntypedef int (*Write)(void* to, size_t size);\n", False)
        self.assertEqual(reference.links(items, "c"), {"Write": ":c:type:`Write <Write>`"})

    def test_declarations_that_share_a_comment_share_an_entry(self) -> None:
        page = self.page("/* x.h - writes. */\n\n/* Both. */\nint A(void);\nint B(void);\n")
        self.assertIn(".. c:function:: int A(void)\n                int B(void)\n\n   Both.\n", page)

    def test_indented_lines_are_one_block_of_code(self) -> None:
        page = self.page("/* x.h - writes.\n *\n *     a();\n *\n *     b();\n */\n\nint A(void);\n")
        self.assertEqual(page.count("code-block"), 1)


if __name__ == "__main__":
    unittest.main()
