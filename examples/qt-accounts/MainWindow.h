#pragma once

#include <QLabel>
#include <QListView>
#include <QMainWindow>
#include <QPushButton>
#include <QStandardItemModel>
#include <QTableView>

#include "RepositoryModel.h"

/// The accounts on the left, the repositories of the chosen one on the right. The accounts are in
/// memory alone: an application that keeps them puts the tokens into the system's keyring.
class MainWindow : public QMainWindow {
public:
    MainWindow();

private:
    void layOut();
    void addAccount();
    void list();
    void listOrCancel() { repositories_.isListing() ? repositories_.cancel() : list(); }
    void showPage(int pages);
    void showEnd(const std::optional<RKTError>& error);

    QStandardItemModel accounts_;
    RepositoryModel repositories_;
    QListView* accountList_ = new QListView;
    QTableView* table_ = new QTableView;
    QLabel* error_ = new QLabel;
    QLabel* status_ = new QLabel("Add an account to see its repositories.");
    QPushButton* add_ = new QPushButton("Add account…");
    QPushButton* action_ = new QPushButton("Cancel");
};
