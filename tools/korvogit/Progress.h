#pragma once

#include <string>

#include "PageWalk.h"
#include "Spinner.h"

namespace korvogit {

/// How far a walk over pages has come: a line on standard error that moves, with a bar where the
/// service tells how many pages there are.
class Progress {
public:
    explicit Progress(const std::string& serviceName) : spinner_("Asking " + serviceName, true) {}

    void show(const PageWalk& walk);
    Spinner& spinner() { return spinner_; }

private:
    Spinner spinner_;
};

}  // namespace korvogit
