// The C library's own conversions in the C locale, whatever locale the test program runs in: second opinions need it.
#ifndef VELAGNSS_TESTS_C_LOCALE_H
#define VELAGNSS_TESTS_C_LOCALE_H

#include <locale.h>

class CLocale {
 public:
  CLocale() : m_locale(newlocale(LC_ALL_MASK, "C", nullptr)), m_before(uselocale(m_locale)) {}
  CLocale(const CLocale&) = delete;
  CLocale& operator=(const CLocale&) = delete;
  ~CLocale() {
    uselocale(m_before);
    freelocale(m_locale);
  }

 private:
  locale_t m_locale;
  locale_t m_before;
};

#endif  // VELAGNSS_TESTS_C_LOCALE_H
