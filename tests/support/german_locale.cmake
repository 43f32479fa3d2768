# A locale with a decimal comma, thousands grouped by points and translated error texts, so that no
# test depends on what the machine has installed. A test that wants it depends on the target
# jtpdf_test_locale and runs with the properties in jtpdf_german_locale.

set(jtpdf_locales ${PROJECT_BINARY_DIR}/tests/locales)
# The C library forgets a few bytes of its own when LOCPATH is set. One variable a property:
# gtest_discover_tests takes lists apart.
set(jtpdf_german_locale ENVIRONMENT_MODIFICATION "LOCPATH=set:${jtpdf_locales}"
  ENVIRONMENT "LSAN_OPTIONS=suppressions='${CMAKE_CURRENT_LIST_DIR}/locale_leaks.txt'")
if(TARGET jtpdf_test_locale)
  return()
endif()

find_program(LOCALEDEF localedef)
if(NOT LOCALEDEF OR NOT EXISTS /usr/share/i18n/locales/de_DE)
  message(FATAL_ERROR "The tests take a German locale, whose source is not there: install the Debian "
    "package locales, or say -DBUILD_TESTING=OFF")
endif()
add_custom_command(OUTPUT ${jtpdf_locales}/de_DE.UTF-8/LC_NUMERIC
  COMMAND ${CMAKE_COMMAND} -E make_directory ${jtpdf_locales}
  COMMAND ${LOCALEDEF} -i de_DE -f UTF-8 --no-archive ${jtpdf_locales}/de_DE.UTF-8
  COMMENT "Compiling the locale de_DE.UTF-8" VERBATIM)
add_custom_target(jtpdf_test_locale ALL DEPENDS ${jtpdf_locales}/de_DE.UTF-8/LC_NUMERIC)
