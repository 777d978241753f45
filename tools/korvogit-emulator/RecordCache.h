#pragma once

#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include "Accounts.h"
#include "Paging.h"

namespace emulator {

/// JSON texts of records, each made once, since making one costs more than sending it. Safe from
/// any thread.
class RecordCache {
public:
    /// The text under that key; `make` gives it when there is none yet.
    template <typename Make>
    std::string text(const std::string& key, Make make) {
        {
            const std::lock_guard lock(mutex_);
            if (const auto found = texts_.find(key); found != texts_.end()) {
                return found->second;
            }
        }
        std::string made = make();
        const std::lock_guard lock(mutex_);
        return texts_.try_emplace(key, std::move(made)).first->second;
    }

private:
    std::mutex mutex_;
    std::unordered_map<std::string, std::string> texts_;
};

/// A page of a list as the text of a JSON array; `textOf` gives each record's text.
template <typename TextOf>
std::string jsonArray(const std::vector<const Repository*>& repositories, const Page& page,
                      TextOf textOf) {
    std::string text = "[";
    for (auto i = page.first(); i < page.last(); ++i) {
        text += text.size() > 1 ? "," : "";
        text += textOf(*repositories[i]);
    }
    return text + "]";
}

}  // namespace emulator
