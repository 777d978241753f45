#include "Report.h"

#include <iomanip>
#include <ostream>
#include <string>

namespace soak {

namespace {

class Table {
public:
    explicit Table(std::ostream& stream) : stream_(stream) {}

    void row(const std::string& name, const std::string& value, bool isInOrder = true) {
        stream_ << std::left << std::setw(34) << name << std::right << std::setw(16) << value
                << (isInOrder ? "" : "   OUT OF ORDER") << '\n';
    }
    void row(const std::string& name, std::uint64_t value, bool isInOrder = true) {
        row(name, std::to_string(value), isInOrder);
    }

private:
    std::ostream& stream_;
};

std::string mebibytes(std::size_t bytes) {
    const auto tenths = bytes * 10 >> 20;
    return std::to_string(tenths / 10) + "." + std::to_string(tenths % 10) + " MiB";
}

std::string change(std::size_t before, std::size_t after) {
    return std::to_string(before) + " -> " + std::to_string(after);
}

}  // namespace

bool Report::isInOrder() const {
    return balance.isEven() && servicesLeft == 0 && before == after &&
           (!judgesMemory() || MemoryTrend(memory).isFlat());
}

void Report::print(std::ostream& stream) const {
    Table table(stream);
    table.row("operations started", balance.started);
    table.row("  completed", balance.completed, balance.inFlight() == 0);
    table.row("    with success", balance.succeeded);
    table.row("    with an error", balance.failed);
    table.row("    cancelled", balance.cancelled);
    table.row("  completed more than once", balance.doubled, balance.doubled == 0);
    table.row("  dropped without completion", balance.dropped, balance.dropped == 0);
    table.row("  in flight at the end", balance.inFlight(), balance.inFlight() == 0);
    table.row("services made", servicesMade);
    table.row("  not freed after their end", servicesLeft, servicesLeft == 0);
    table.row("open descriptors", change(before.descriptors, after.descriptors),
              before.descriptors == after.descriptors);
    table.row("threads", change(before.threads, after.threads), before.threads == after.threads);
    if (judgesMemory()) {
        const MemoryTrend trend(memory);
        table.row("memory in use, second third", mebibytes(trend.second));
        table.row("  last third", mebibytes(trend.last), trend.isFlat());
    } else {
        table.row("memory in use",
                  isLongEnough() ? "not told by the allocator" : "not judged below a minute");
    }
    table.row("resident memory", mebibytes(residentMemory));
}

}  // namespace soak
