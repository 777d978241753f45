#include "core/Misuse.h"

#include <string>

#include "KorvoGitService/RKTException.h"

namespace rkt {

void raiseMustBeOverridden(std::string_view operation) {
    throw RKTInvalidArgumentException(std::string(operation) +
                                      " must be overridden by subclasses.");
}

void raiseNeedsConcreteSubclass(std::string_view operation) {
    throw RKTInvalidArgumentException(std::string(operation) +
                                      " should only be invoked on a concrete service subclass.");
}

void raiseMustBeInitializedUsing(std::string_view initializer) {
    throw RKTInvalidArgumentException("Must be initialized using -" + std::string(initializer));
}

}  // namespace rkt
