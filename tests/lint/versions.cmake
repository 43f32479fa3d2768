# Whatever names the version of the project names the same one.
#   cmake -D ROOT=<source folder> -D VERSION=<version> -P versions.cmake

cmake_minimum_required(VERSION 3.25)

# expect(file pattern): the first match of the pattern in the file has the version in brackets.
function(expect file pattern)
  file(READ ${ROOT}/${file} text)
  string(REGEX MATCH "${pattern}" match "${text}")
  if(NOT CMAKE_MATCH_1 STREQUAL VERSION)
    message(SEND_ERROR "${file} names the version \"${CMAKE_MATCH_1}\"; the project's is ${VERSION}")
  endif()
endfunction()

expect(CHANGELOG.md "\n## ([^\n]*)")
expect(packaging/debian/changelog "^jtpdf \\(([^)]*)-[0-9]+\\)")
expect(include/jtpdf/version.h "define JTPDF_VERSION_STRING \"([^\"]*)\"")
expect(bindings/python/pyproject.toml "\nversion = \"([^\"]*)\"")
expect(bindings/js/package.json "\"version\": \"([^\"]*)\"")
expect(bindings/js/package-lock.json "\"version\": \"([^\"]*)\"")
expect(tools/jtpdf/jtpdf.1 "\\.TH JTPDF [^\n]*\"jtpdf ([^\"]*)\"")
