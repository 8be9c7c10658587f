#pragma once

#include <locale.h>

#include <memory>
#include <type_traits>

#include "platform/collation.h"

namespace quil::linux_platform {

/// The order of the locale that the environment names, without touching the process's own locale.
class LinuxCollation : public Collation {
  public:
    LinuxCollation();
    int localizedCaseInsensitiveCompare(std::string_view a, std::string_view b) override;

  private:
    struct Deleter {
        void operator()(locale_t locale) const { freelocale(locale); }
    };
    /// Null when the environment names no locale that is installed; letters then follow each other
    /// as in Unicode.
    std::unique_ptr<std::remove_pointer_t<locale_t>, Deleter> locale_;
};

}  // namespace quil::linux_platform
