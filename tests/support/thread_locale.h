// A locale that the build has made, for one thread.
#pragma once

#include <locale.h>

#include <cstdlib>
#include <stdexcept>

namespace zr_test {

// The locale of the calling thread, and of no other, while it lives. Null: the one without a name ("C").
class thread_locale {
public:
    explicit thread_locale(const char* name) {
        setenv("LOCPATH", ZR_TEST_LOCALES, 1);  // the directory that the build has made
        locale_ = newlocale(LC_ALL_MASK, name != nullptr ? name : "C", nullptr);
        unsetenv("LOCPATH");
        if (locale_ == nullptr) throw std::runtime_error("locale missing");
        before_ = uselocale(locale_);
    }
    ~thread_locale() {
        uselocale(before_);
        freelocale(locale_);
    }
    thread_locale(const thread_locale&) = delete;
    thread_locale& operator=(const thread_locale&) = delete;

private:
    locale_t locale_;
    locale_t before_;
};

}  // namespace zr_test
