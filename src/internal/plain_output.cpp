#include "internal/plain_output.h"

#include <iostream>
#include <mutex>

#include "vorund/debugger.h"

namespace vorund {
namespace {

struct PlainOutput {
    std::mutex mutex;
    std::ostream* stream = &std::cout;
};

PlainOutput& plainOutput() {
    // Never destroyed: the library may still be in use while static objects go.
    static PlainOutput* const output = new PlainOutput;
    return *output;
}

}  // namespace

void setPlainOutput(std::ostream* stream) {
    PlainOutput& output = plainOutput();
    const std::lock_guard<std::mutex> lock(output.mutex);
    output.stream = stream;
}

void internal::printPlain(const std::string& text) {
    PlainOutput& output = plainOutput();
    const std::lock_guard<std::mutex> lock(output.mutex);
    if (output.stream != nullptr) *output.stream << text << std::flush;
}

}  // namespace vorund
