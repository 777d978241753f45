// The process-wide network settings, shared without copying.

#pragma once

#include <memory>
#include <mutex>

#include "KorvoGitService/RKTNetworkSettings.h"

namespace rkt {

class SharedNetworkSettings {
public:
    static SharedNetworkSettings& instance();

    /// Never null; what it points to does not change.
    std::shared_ptr<const RKTNetworkSettings> get() const;
    void set(std::shared_ptr<const RKTNetworkSettings> settings);

private:
    mutable std::mutex mutex_;
    std::shared_ptr<const RKTNetworkSettings> settings_ =
        std::make_shared<const RKTNetworkSettings>();
};

}  // namespace rkt
