#include "MainWindow.h"

#include <QGridLayout>
#include <QHeaderView>
#include <QSortFilterProxyModel>

#include "AccountDialog.h"
#include "Library.h"

MainWindow::MainWindow() {
    setWindowTitle("Repositories");
    layOut();
    accountList_->setModel(&accounts_);
    accountList_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    auto* sorted = new QSortFilterProxyModel(this);
    sorted->setSourceModel(&repositories_);
    sorted->setSortCaseSensitivity(Qt::CaseInsensitive);
    table_->setModel(sorted);
    table_->setSortingEnabled(true);
    table_->sortByColumn(-1, Qt::AscendingOrder);  // the service's order, until a header is clicked
    table_->setColumnWidth(0, 240);
    action_->setEnabled(false);
    error_->hide();

    connect(add_, &QPushButton::clicked, this, &MainWindow::addAccount);
    connect(action_, &QPushButton::clicked, this, &MainWindow::listOrCancel);
    connect(accountList_->selectionModel(), &QItemSelectionModel::currentChanged, this,
            &MainWindow::list);
    connect(&repositories_, &RepositoryModel::pageArrived, this, &MainWindow::showPage);
    connect(&repositories_, &RepositoryModel::ended, this, &MainWindow::showEnd);
}

void MainWindow::layOut() {
    resize(1000, 560);
    accountList_->setFixedWidth(200);
    table_->setSelectionBehavior(QAbstractItemView::SelectRows);
    table_->setWordWrap(false);
    table_->verticalHeader()->hide();
    table_->horizontalHeader()->setDefaultSectionSize(80);
    table_->horizontalHeader()->setStretchLastSection(true);
    error_->setObjectName("error");
    error_->setWordWrap(true);
    error_->setTextFormat(Qt::PlainText);  // a service's words are no markup
    error_->setStyleSheet("background: #fdecea; color: #8a1c12; border-radius: 4px; padding: 8px");
    status_->setObjectName("status");

    setCentralWidget(new QWidget);
    auto* grid = new QGridLayout(centralWidget());
    grid->addWidget(accountList_, 0, 0, 2, 1);
    grid->addWidget(error_, 0, 1, 1, 2);
    grid->addWidget(table_, 1, 1, 1, 2);
    grid->addWidget(add_, 2, 0);
    grid->addWidget(status_, 2, 1);
    grid->addWidget(action_, 2, 2);
    grid->setColumnStretch(1, 1);
}

void MainWindow::addAccount() {
    auto* dialog = new AccountDialog(this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &QDialog::accepted, this, [this, dialog] {
        const auto& account = dialog->account();
        const QString user = qtText(account->user());
        const QString service = serviceName(account->serviceType().value_or(""));
        auto* item = new QStandardItem(user.isEmpty() ? service : user + "\n" + service);
        item->setData(QVariant::fromValue(account));
        accounts_.appendRow(item);
        accountList_->setCurrentIndex(item->index());
    });
    dialog->open();
}

void MainWindow::list() {
    const QVariant chosen = accountList_->currentIndex().data(Qt::UserRole + 1);
    error_->hide();
    status_->setText("Asking…");
    action_->setText("Cancel");
    action_->setEnabled(true);
    repositories_.list(chosen.value<std::shared_ptr<RKTServiceCredentials>>());
}

void MainWindow::showPage(int pages) {
    status_->setText(QString("%1 repositories, page %2…").arg(repositories_.rowCount()).arg(pages));
}

void MainWindow::showEnd(const std::optional<RKTError>& error) {
    const bool cancelled = error && error->code() == RKTError::NSURLErrorCancelled;
    const QString count = QString("%1 repositories").arg(repositories_.rowCount());
    status_->setText(cancelled ? count + ", cancelled" : count);
    action_->setText("Reload");
    error_->setText(error ? errorText(*error) : QString());
    error_->setVisible(error && !cancelled);
}
