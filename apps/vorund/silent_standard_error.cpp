#include "silent_standard_error.h"

#include <fcntl.h>
#include <unistd.h>

namespace vorund::app {

SilentStandardError::SilentStandardError(bool active) {
    if (!active) return;
    former_ = ::fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 0);
    const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (former_ >= 0 && nowhere >= 0) ::dup2(nowhere, STDERR_FILENO);
    if (nowhere >= 0) ::close(nowhere);
}

SilentStandardError::~SilentStandardError() {
    if (former_ < 0) return;
    ::dup2(former_, STDERR_FILENO);
    ::close(former_);
}

}  // namespace vorund::app
