#include <algorithm>
#include <array>
#include <random>
#include <span>
#include <unordered_set>

#include "Accounts.h"

namespace emulator {

namespace {

using namespace std::string_view_literals;

constexpr std::array adjectives{"amber"sv,   "brisk"sv,  "calm"sv,   "distant"sv, "eager"sv,
                                "faint"sv,   "gentle"sv, "hollow"sv, "ivory"sv,   "jolly"sv,
                                "keen"sv,    "lunar"sv,  "mellow"sv, "narrow"sv,  "opal"sv,
                                "patient"sv, "quiet"sv,  "rustic"sv, "silent"sv,  "tidal"sv};
constexpr std::array nouns{"anchor"sv,   "beacon"sv, "compass"sv,  "delta"sv,     "engine"sv,
                           "forge"sv,    "garden"sv, "harbor"sv,   "index"sv,     "journal"sv,
                           "kettle"sv,   "ledger"sv, "mirror"sv,   "notebook"sv,  "orchard"sv,
                           "parser"sv,   "quarry"sv, "router"sv,   "scheduler"sv, "toolkit"sv,
                           "umbrella"sv, "viewer"sv, "workshop"sv, "yard"sv};
constexpr std::array separators{"-"sv, "_"sv, "."sv};
constexpr std::array languages{"C++"sv,  "Rust"sv,       "Go"sv,   "Python"sv, "Swift"sv,
                               "Ruby"sv, "TypeScript"sv, "Java"sv, "Shell"sv,  "Kotlin"sv};
constexpr std::array licenses{"MIT"sv, "Apache-2.0"sv, "BSD-3-Clause"sv, "GPL-3.0"sv, "MPL-2.0"sv};
constexpr std::array branches{"main"sv,   "main"sv,    "main"sv,
                              "master"sv, "develop"sv, "release/2.x"sv};
constexpr std::array descriptions{
    "Keeps the team's notes in one place."sv,
    "A small tool that does one thing; see the manual for what it does not do."sv,
    "Werkzeuge für die tägliche Arbeit – mit Übersetzungen."sv,
    "Outils de développement, déjà prêts à l’emploi."sv,
    "日々の作業を助ける小さな道具箱。"sv,
    "Инструменты для сборки и проверки."sv,
    "Says \"hello\" & <nothing> else, with a backslash \\ and a\ttab."sv,
    "أدوات صغيرة للعمل اليومي"sv,
    "🚀 Fast enough, 🧪 tested, 📦 packaged."sv,
    "Experiments with long texts: a description may run on for quite a while, because nobody stops "
    "its author from explaining where the idea came from, who helped, and what is left to do."sv,
    ""sv};

/// The standard's distributions differ between libraries; this does not.
class Dice {
public:
    explicit Dice(std::uint64_t seed) : engine_(seed) {}
    std::int64_t below(std::int64_t limit) {
        return static_cast<std::int64_t>(engine_() % static_cast<std::uint64_t>(limit));
    }
    bool percent(std::int64_t chance) { return below(100) < chance; }
    std::string pick(std::span<const std::string_view> choices) {
        return std::string(
            choices[static_cast<std::size_t>(below(static_cast<std::int64_t>(choices.size())))]);
    }
    /// Many small numbers, few big ones.
    std::int64_t skewed() { return below(4) == 0 ? below(40'000) : below(60); }

private:
    std::mt19937_64 engine_;
};

std::uint64_t hashOf(std::string_view text) {
    std::uint64_t hash = 14695981039346656037U;
    for (const char c : text) {
        hash = (hash ^ static_cast<unsigned char>(c)) * 1099511628211U;
    }
    return hash;
}

std::int64_t idOf(std::string_view login) {
    return 1'000'000 + static_cast<std::int64_t>(hashOf(login) % 90'000'000);
}

std::string makeName(Dice& dice, std::unordered_set<std::string>& taken) {
    std::string name = dice.pick(adjectives) + dice.pick(separators) + dice.pick(nouns);
    if (dice.percent(10)) {
        name.front() = static_cast<char>(name.front() - 'a' + 'A');
    }
    const std::string stem = name;
    for (int number = 2; !taken.insert(name).second; ++number) {
        name = stem + "-" + std::to_string(number);
    }
    return name;
}

Visibility makeVisibility(Dice& dice, const Owner& owner) {
    if (owner.isOrganization && dice.percent(25)) {
        return Visibility::Internal;
    }
    return dice.percent(45) ? Visibility::Private : Visibility::Public;
}

void describe(Repository& repository, Dice& dice) {
    if (!dice.percent(20)) {
        repository.description = dice.pick(descriptions);
    }
    if (dice.percent(30)) {
        repository.homepage = "https://" + repository.name + ".example.org/";
    }
    if (!dice.percent(15)) {
        repository.language = dice.pick(languages);
    }
    if (dice.percent(60)) {
        repository.license = dice.pick(licenses);
    }
    for (auto topics = dice.below(4); topics > 0; --topics) {
        const auto topic = dice.pick(nouns);
        if (std::ranges::find(repository.topics, topic) == repository.topics.end()) {
            repository.topics.push_back(topic);
        }
    }
}

void datesAndCounts(Repository& repository, Dice& dice) {
    constexpr std::int64_t day = 86400;
    repository.updated = repository.created + dice.below(900 * day);
    repository.pushed = repository.created + dice.below(900 * day);
    repository.stars = dice.skewed();
    repository.forks = dice.skewed() / 8;
    repository.openIssues = dice.below(90);
    repository.sizeInKilobytes = dice.skewed() * 3;
}

}  // namespace

std::vector<Repository> generateRepositories(const Owner& owner, std::size_t count,
                                             std::uint64_t seed) {
    Dice dice(hashOf(owner.login) ^ (seed * 0x9E3779B97F4A7C15U));
    std::vector<Owner> owners{owner};
    for (const auto* suffix : {"-labs", "-kit", "-org"}) {
        owners.push_back({owner.login + suffix, idOf(owner.login + suffix), true});
    }
    std::unordered_set<std::string> taken;
    std::vector<Repository> repositories;
    std::int64_t id = 100'000'000 + static_cast<std::int64_t>(hashOf(owner.login) % 800'000'000);
    std::int64_t created = 1'420'070'400 + dice.below(86400);
    for (std::size_t i = 0; i < count; ++i) {
        Repository repository;
        repository.id = id += 1 + dice.below(900);
        repository.created = created += 1 + dice.below(40'000);
        repository.owner = owners[dice.percent(60) ? 0 : static_cast<std::size_t>(dice.below(4))];
        repository.name = makeName(dice, taken);
        repository.visibility = makeVisibility(dice, repository.owner);
        repository.isFork = dice.percent(18);
        repository.isArchived = dice.percent(12);
        repository.defaultBranch = dice.pick(branches);
        describe(repository, dice);
        datesAndCounts(repository, dice);
        repositories.push_back(std::move(repository));
    }
    return repositories;
}

Account generateAccount(std::string login, std::string token, std::size_t repositories,
                        Restriction restriction) {
    Account account;
    account.id = idOf(login);
    account.displayName = login;
    account.displayName.front() = static_cast<char>(login.front() - 'a' + 'A');
    account.displayName += " Example";
    account.email = login + "@example.org";
    account.password = "demo-password-" + login;
    account.tokens.push_back({.value = std::move(token)});
    account.restriction = restriction;
    account.login = std::move(login);
    account.repositories = generateRepositories(account.asOwner(), repositories);
    return account;
}

}  // namespace emulator
