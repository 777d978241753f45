#include "RepositoryModel.h"

#include <iterator>
#include <utility>

#include "Library.h"

void RepositoryModel::list(const std::shared_ptr<RKTServiceCredentials>& account) {
    stop();
    beginResetModel();
    repositories_.clear();
    names_.clear();
    endResetModel();
    pages_ = 0;
    received_ = 0;
    barrenPages_ = 0;
    serviceType_ = account->serviceType().value_or("");
    service_ = RKTService::serviceWithCredentials(account);
    askForPage();
}

void RepositoryModel::stop() {
    if (const auto service = std::exchange(service_, nullptr)) service->invalidateAndCancel();
}

// Bitbucket Server takes (page - 1) / countPerPage for the number of repositories to skip.
bool RepositoryModel::skipsRepositories() const {
    return serviceType_ == RKTServiceTypeBitbucketServer;
}

void RepositoryModel::askForPage() {
    const std::int64_t count = skipsRepositories() ? 1000 : 100;  // the longest pages there are
    const auto request = std::make_shared<RKTRepositoriesRequest>();
    request->setCountPerPage(count);
    request->setPage(skipsRepositories() ? received_ * count + 1 : pages_ + 1);
    using Result = std::shared_ptr<RKTServiceArrayResult>;
    task_ = service_->fetchRepositoriesWithRequest(
        request, inMainThread<Result>(this, [this, service = service_](const Result& result) {
            if (service == service_) take(*result);  // else it is of an earlier listing
        }));
}

void RepositoryModel::take(const RKTServiceArrayResult& result) {
    auto error = result.error();
    if (!error && !result.results()) error = incomplete();  // the library takes any JSON
    if (!error) {
        const auto page = newOnes(*result.results());
        received_ += qint64(result.results()->size());
        barrenPages_ = page.empty() ? barrenPages_ + 1 : 0;
        append(page);
        emit pageArrived(++pages_);
        // A service that gives the same page, or an empty one, again and again would never end. But
        // some pages may bring nothing: Bitbucket Server counts repositories that the account may
        // not see, too, and repeats what follows them; services with links may leave them out.
        const bool isLast = isLastPage(result);
        if (!isLast && barrenPages_ <= 20) return askForPage();
        // Behind empty pages there may be more.
        if (!isLast && result.results()->empty()) error = incomplete();
    }
    stop();
    emit ended(error);
}

RKTError RepositoryModel::incomplete() {
    return {RKTError::NSURLErrorDomain,
            RKTError::NSURLErrorBadServerResponse,
            {{RKTError::NSLocalizedDescriptionKey, std::string("The list is not complete.")}}};
}

// Services that page by links say whether there is a next page. Without such links an empty page is
// the end; the links of a gateway say nothing about pages.
bool RepositoryModel::isLastPage(const RKTServiceArrayResult& result) {
    const auto links = result.linkRelations();
    const auto has = [&](const char* name) { return links && links->contains(name); };
    if (has(RKTServiceLinkRelationNext)) return false;
    return result.results()->empty() || has(RKTServiceLinkRelationFirst) ||
           has(RKTServiceLinkRelationPrevious);
}

// A service may give no identifier, or an empty text for all.
static RKTServiceIdentifier nameOf(const RKTServiceRepository& repository) {
    const RKTServiceIdentifier none("");
    const auto identifier = repository.identifier().value_or(none);
    return identifier != none ? identifier : repository.fullName().value_or("");
}

RKTServiceArrayResult::Results RepositoryModel::newOnes(
    RKTServiceArrayResult::Results repositories) {
    std::erase_if(repositories, [this](const auto& repository) {
        return !names_.insert(nameOf(*repository)).second;
    });
    return repositories;
}

void RepositoryModel::append(const RKTServiceArrayResult::Results& repositories) {
    if (repositories.empty()) return;
    beginInsertRows({}, rowCount(), rowCount() + int(repositories.size()) - 1);
    repositories_.insert(repositories_.end(), repositories.begin(), repositories.end());
    endInsertRows();
}

static QVariant shown(const std::optional<std::string>& text) {
    return qtText(text);
}
static QVariant shown(const std::optional<RKTNumber>& number) {
    return number ? QVariant(qlonglong(number->integerValue())) : QVariant();
}

static const struct {
    const char* title;
    QVariant (*value)(const RKTServiceRepository& repository);
} columns[] = {
    {"Name", [](auto& r) { return shown(r.fullName() ? r.fullName() : r.name()); }},
    {"Visibility", [](auto& r) { return shown(r.visibility()); }},
    {"Stars", [](auto& r) { return shown(r.numberOfStars()); }},
    {"Forks", [](auto& r) { return shown(r.numberOfForks()); }},
    {"Branch", [](auto& r) { return shown(r.defaultBranchName()); }},
    {"Description", [](auto& r) { return shown(r.descriptiveText()); }},
};

int RepositoryModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : int(std::size(columns));
}

QVariant RepositoryModel::data(const QModelIndex& index, int role) const {
    if (role != Qt::DisplayRole && role != Qt::TextAlignmentRole) return {};
    auto value = columns[index.column()].value(*repositories_[std::size_t(index.row())]);
    if (role == Qt::DisplayRole) return value;
    const bool isNumber = value.typeId() == QMetaType::LongLong;
    return int((isNumber ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter);
}

QVariant RepositoryModel::headerData(int section, Qt::Orientation orientation, int role) const {
    const bool isTitle = orientation == Qt::Horizontal && role == Qt::DisplayRole;
    return isTitle ? QVariant(columns[section].title) : QVariant();
}
