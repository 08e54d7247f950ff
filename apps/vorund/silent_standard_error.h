#pragma once

namespace vorund::app {

/// Nothing that is written to standard error while it lives is seen: the libraries that decode
/// images chatter there by themselves.
class SilentStandardError {
 public:
    /// @param active  False for an object that does nothing.
    explicit SilentStandardError(bool active);
    ~SilentStandardError();
    SilentStandardError(const SilentStandardError&) = delete;
    SilentStandardError& operator=(const SilentStandardError&) = delete;

 private:
    int former_ = -1;
};

}  // namespace vorund::app
