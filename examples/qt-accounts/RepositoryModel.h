#pragma once

#include <KorvoGitService/KorvoGitService.h>

#include <QAbstractTableModel>
#include <unordered_set>

/// The repositories of one account, which fill the model page after page.
class RepositoryModel : public QAbstractTableModel {
    Q_OBJECT

public:
    ~RepositoryModel() override { stop(); }

    /// Begins anew with this account; what is under way for another one is cancelled.
    void list(const std::shared_ptr<RKTServiceCredentials>& account);
    /// What has come stays; ended() tells when nothing more comes.
    void cancel() {
        if (service_) task_->cancel();
    }
    bool isListing() const { return service_ != nullptr; }

    int rowCount(const QModelIndex& parent = {}) const override {
        return parent.isValid() ? 0 : int(repositories_.size());
    }
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

signals:
    void pageArrived(int pages);
    /// Once for each list(); without an error at the end of the list.
    void ended(const std::optional<RKTError>& error);

private:
    bool skipsRepositories() const;
    void askForPage();
    void take(const RKTServiceArrayResult& result);
    static bool isLastPage(const RKTServiceArrayResult& result);
    static RKTError incomplete();
    /// What of them the model does not have yet. A page may repeat what came before, when the list
    /// grows meanwhile.
    RKTServiceArrayResult::Results newOnes(RKTServiceArrayResult::Results repositories);
    void append(const RKTServiceArrayResult::Results& repositories);
    void stop();

    RKTServiceArrayResult::Results repositories_;
    std::unordered_set<RKTServiceIdentifier> names_;  // of these
    std::string serviceType_;
    int pages_ = 0;
    qint64 received_ = 0;
    int barrenPages_ = 0;                  // without anything new, one after another
    std::shared_ptr<RKTService> service_;  // while listing
    std::shared_ptr<RKTURLSessionDataTask> task_;
};
