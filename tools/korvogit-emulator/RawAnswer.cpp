#include "RawAnswer.h"

#include <utility>

namespace emulator {

RawAnswer& RawAnswer::send(std::string bytes, std::size_t times) {
    return then(Send{std::move(bytes), times});
}

RawAnswer& RawAnswer::pause(std::chrono::milliseconds duration) {
    return then(Pause{duration});
}

RawAnswer& RawAnswer::await(std::shared_ptr<Gate> gate) {
    return then(Await{std::move(gate)});
}

RawAnswer& RawAnswer::silence() {
    return then(Silence{});
}

RawAnswer& RawAnswer::reset() {
    return then(Reset{});
}

RawAnswer& RawAnswer::close() {
    return then(Close{});
}

RawAnswer& RawAnswer::cutOff() {
    return then(CutOff{});
}

RawAnswer& RawAnswer::keepAlive(bool keep) {
    keepAlive_ = keep;
    return *this;
}

RawAnswer& RawAnswer::then(Step step) {
    steps_.push_back(std::move(step));
    return *this;
}

RawAnswer& RawAnswer::prepend(const RawAnswer& first) {
    steps_.insert(steps_.begin(), first.steps_.begin(), first.steps_.end());
    return *this;
}

}  // namespace emulator
