// The example of a desktop application, without a screen and against the emulator. What a person
// would press and type is pressed and typed.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QApplication>
#include <QDesktopServices>
#include <QLabel>
#include <QListView>
#include <QPushButton>
#include <QTableView>
#include <QTcpSocket>
#include <QTest>
#include <QUrl>
#include <cstdlib>
#include <future>

#include "examples/qt-accounts/AccountDialog.h"
#include "examples/qt-accounts/Library.h"
#include "examples/qt-accounts/MainWindow.h"
#include "tests/tools/emulator/Client.h"
#include "tools/korvogit-emulator/Emulator.h"

namespace {

constexpr int patience = 30'000;

/// One for all tests: the network settings are the process's.
emulator::Server& server() {
    static emulator::Server object;
    return object;
}

/// Stands for the browser.
class OpenedAddresses : public QObject {
    Q_OBJECT
public:
    OpenedAddresses() { QDesktopServices::setUrlHandler("https", this, "open"); }
    ~OpenedAddresses() override { QDesktopServices::unsetUrlHandler("https"); }
    QUrl wait() {
        EXPECT_TRUE(QTest::qWaitFor([this] { return !address_.isEmpty(); }, patience));
        return address_;
    }
public slots:
    void open(const QUrl& address) { address_ = address; }

private:
    QUrl address_;
};

class QtAccounts : public testing::Test {
protected:
    QtAccounts() { window.show(); }
    ~QtAccounts() override { server().clearScripts(); }

    template <class Widget>
    Widget* named(const char* name) {
        return window.findChild<Widget*>(name);
    }
    QPushButton* button(const QString& text, QWidget* parent = nullptr) {
        for (auto* each : (parent ? parent : &window)->findChildren<QPushButton*>()) {
            if (each->text().remove('&').startsWith(text)) return each;
        }
        return nullptr;
    }
    /// The field of the dialog that has this label.
    template <class Field>
    Field* field(const char* label) {
        auto* form = qobject_cast<QFormLayout*>(dialog()->layout());
        for (int row = 0; row < form->rowCount(); ++row) {
            const auto* item = form->itemAt(row, QFormLayout::LabelRole);
            auto* text = item ? qobject_cast<QLabel*>(item->widget()) : nullptr;
            if (text && text->text() == label) {
                return qobject_cast<Field*>(form->itemAt(row, QFormLayout::FieldRole)->widget());
            }
        }
        return nullptr;
    }
    AccountDialog* dialog() {
        for (auto* child : window.children()) {
            if (auto* found = dynamic_cast<AccountDialog*>(child)) return found;
        }
        return nullptr;
    }
    QString message() { return dialog()->findChild<QLabel*>("message")->text(); }

    void type(const char* label, const QString& text) {
        auto* line = field<QLineEdit>(label);
        ASSERT_TRUE(line->isVisible()) << label;
        line->clear();
        QTest::keyClicks(line, text);
    }
    void choose(const char* label, const QString& text) {
        field<QComboBox>(label)->setCurrentText(text);
        ASSERT_EQ(field<QComboBox>(label)->currentText().toStdString(), text.toStdString());
    }
    void press(QPushButton* which) {
        ASSERT_TRUE(which && which->isEnabled());
        QTest::mouseClick(which, Qt::LeftButton);
    }
    void pressOK() { press(button("OK", dialog())); }
    void openDialog(const QString& service) {
        press(button("Add account"));
        choose("Service", service);
    }
    /// A server of the person's own.
    void fillIn(const QString& service, const QString& user, const QString& secret) {
        openDialog(service);
        type("Address", QString::fromStdString(server().httpsURL()));
        type("User", user);
        type("Secret", secret);
    }
    void add(const QString& user = "octavia") {
        fillIn("GitHub Enterprise", user, "demo-token-" + user);
        pressOK();
        ASSERT_TRUE(waitForAccounts());
    }
    void addBitbucketCloud() {
        openDialog("Bitbucket Cloud");
        choose("Sign in with", "Password");
        type("User", "octavia");
        type("Secret", "demo-password-octavia");
        pressOK();
        ASSERT_TRUE(waitForAccounts());
    }
    bool waitForAccounts() {
        return QTest::qWaitFor([this] { return dialog() == nullptr; }, patience);
    }
    int rows() { return window.findChild<QTableView*>()->model()->rowCount(); }
    bool waitForRows(int count) {
        return QTest::qWaitFor([&] { return rows() == count; }, patience);
    }
    bool waitForStatus(const QString& text) {
        return QTest::qWaitFor([&] { return named<QLabel>("status")->text() == text; }, patience);
    }
    static emulator::Match page(const std::string& number) {
        return {.also = [number](const emulator::Request& request) {
            return request.queryValue("page") == number;
        }};
    }

    std::unique_ptr<MainWindow> owner = std::make_unique<MainWindow>();
    MainWindow& window = *owner;
};

TEST_F(QtAccounts, ListsAllRepositoriesOfAnAccountThatIsAdded) {
    add();
    EXPECT_TRUE(waitForStatus("137 repositories"));
    EXPECT_EQ(rows(), 137);
    const auto* accounts = window.findChild<QListView*>();
    EXPECT_EQ(accounts->currentIndex().data().toString().toStdString(),
              "octavia\nGitHub Enterprise");
    EXPECT_TRUE(button("Reload")->isEnabled());
    EXPECT_FALSE(named<QLabel>("error")->isVisible());
}

TEST_F(QtAccounts, ListsWhatEveryServiceOffers) {
    for (const char* service : {"GitHub Enterprise", "GitLab self-hosted", "Bitbucket Server"}) {
        fillIn(service, "octavia", "demo-token-octavia");
        pressOK();
        ASSERT_TRUE(waitForAccounts()) << service;
        EXPECT_TRUE(waitForStatus("137 repositories")) << service;
    }
    addBitbucketCloud();
    EXPECT_TRUE(waitForStatus("137 repositories"));
    EXPECT_EQ(window.findChild<QListView*>()->model()->rowCount(), 4);
}

TEST_F(QtAccounts, ShowsARefusalWhereItCanBeMended) {
    fillIn("GitHub Enterprise", "octavia", "wrong");
    pressOK();
    ASSERT_TRUE(QTest::qWaitFor([&] { return button("OK", dialog())->isEnabled(); }, patience));
    EXPECT_EQ(message().toStdString(),
              "The service does not accept the credentials.\nBad credentials");
    type("Secret", "demo-token-octavia");
    pressOK();
    EXPECT_TRUE(waitForAccounts());
    EXPECT_TRUE(waitForRows(137));
}

TEST_F(QtAccounts, FillsTheTableAsPagesArriveWithoutBlocking) {
    auto hold = server().hold(page("2"));
    add();
    ASSERT_TRUE(waitForRows(100));
    EXPECT_EQ(named<QLabel>("status")->text().toStdString(), "100 repositories, page 1…");
    hold.release();
    EXPECT_TRUE(waitForStatus("137 repositories"));
}

TEST_F(QtAccounts, CancelsAndKeepsWhatCame) {
    {
        auto hold = server().hold(page("2"));
        add();
        ASSERT_TRUE(waitForRows(100));
        ASSERT_TRUE(hold.waitUntilReached());
        press(button("Cancel"));
        EXPECT_TRUE(waitForStatus("100 repositories, cancelled"));
        EXPECT_FALSE(named<QLabel>("error")->isVisible());
    }
    press(button("Reload"));
    EXPECT_TRUE(waitForStatus("137 repositories"));
}

TEST_F(QtAccounts, ShowsTheErrorOfALaterPageAboveTheTable) {
    server().script(page("2"), emulator::jsonAnswer(503, R"({"message": "<b>Busy</b>"})"), 1);
    add();
    ASSERT_TRUE(QTest::qWaitFor([&] { return named<QLabel>("error")->isVisible(); }, patience));
    EXPECT_EQ(named<QLabel>("error")->text().toStdString(), "Service Unavailable\n<b>Busy</b>");
    EXPECT_EQ(rows(), 100);
    press(button("Reload"));
    EXPECT_TRUE(waitForRows(137));
    EXPECT_FALSE(named<QLabel>("error")->isVisible());
}

TEST_F(QtAccounts, EndsWhereAServiceGivesTheSamePageAgain) {
    const emulator::Match later{.also = [](const emulator::Request& request) {
        const auto number = request.queryValue("page");
        return number && *number != "1";
    }};
    auto again = emulator::jsonAnswer(200, R"([{"id": 1, "name": "again"}])");
    again.headers.add("Link", "<" + server().httpsURL() + "/api/v3/user/repos>; rel=\"next\"");
    server().script(later, again);
    add();
    EXPECT_TRUE(waitForStatus("101 repositories"));
    EXPECT_EQ(rows(), 101);
}

TEST_F(QtAccounts, SaysThatMoreMayFollowEmptyPages) {
    auto empty = emulator::jsonAnswer(200, "[]");
    empty.headers.add("Link", "<" + server().httpsURL() + "/api/v3/user/repos>; rel=\"next\"");
    server().script({}, emulator::jsonAnswer(200, "{}"), 1);  // the credentials are good
    server().script({}, empty);
    add();
    ASSERT_TRUE(QTest::qWaitFor([&] { return named<QLabel>("error")->isVisible(); }, patience));
    EXPECT_EQ(named<QLabel>("error")->text().toStdString(), "The list is not complete.");
    EXPECT_EQ(rows(), 0);
}

TEST_F(QtAccounts, ListsEachRepositoryWhoseIdentifierIsEmpty) {
    const emulator::Match listing{.path = "/2.0/repositories"};
    server().script(listing, emulator::jsonAnswer(200, R"({"values": [
        {"uuid": "", "full_name": "o/a"}, {"uuid": "", "full_name": "o/b"}]})"),
                    1);
    server().script(listing, emulator::jsonAnswer(200, R"({"values": []})"));
    addBitbucketCloud();
    EXPECT_TRUE(waitForStatus("2 repositories"));
    EXPECT_EQ(rows(), 2);
}

// Those that the account may not see count among those to skip, so what follows them comes again.
TEST_F(QtAccounts, ListsAllOfABitbucketServerThatHidesSome) {
    server().script({.path = "/rest/api/1.0/repos"}, [](const emulator::Request& request) {
        const int start = std::stoi(request.queryValue("start").value_or("0"));
        std::string values;
        for (int id = start, count = 0; id < 60 && count < 10; ++id) {
            if (id >= 5 && id < 45) continue;
            values += (count++ ? ", " : "") + (R"({"id": )" + std::to_string(id)) + "}";
        }
        return emulator::jsonAnswer(200, R"({"values": [)" + values + "]}");
    });
    fillIn("Bitbucket Server", "octavia", "demo-token-octavia");
    pressOK();
    ASSERT_TRUE(waitForAccounts());
    EXPECT_TRUE(waitForStatus("20 repositories"));
    EXPECT_EQ(rows(), 20);
}

TEST_F(QtAccounts, ListsOnWhereLinksTellNothingOfPages) {
    auto first = emulator::jsonAnswer(200, R"([{"id": 1}, {"id": 2}])");
    first.headers.add("Link", "<https://cdn.example/>; rel=preconnect");
    server().script(page("1"), first);
    server().script(page("2"), emulator::jsonAnswer(200, R"([{"id": 3}])"));
    server().script(page("3"), emulator::jsonAnswer(200, "[]"));
    add();
    EXPECT_TRUE(waitForStatus("3 repositories"));
    EXPECT_EQ(rows(), 3);
}

TEST_F(QtAccounts, ShowsTheAccountThatWasChosenLast) {
    add("marlow");
    ASSERT_TRUE(waitForStatus("3 repositories"));
    auto hold = server().hold(page("2"));
    add("octavia");
    ASSERT_TRUE(waitForRows(100));
    ASSERT_TRUE(hold.waitUntilReached());
    auto* accounts = window.findChild<QListView*>();
    accounts->setCurrentIndex(accounts->model()->index(0, 0));
    hold.release();
    EXPECT_TRUE(waitForStatus("3 repositories"));
    EXPECT_EQ(rows(), 3);
}

TEST_F(QtAccounts, SortsByAColumnWhoseHeaderIsClicked) {
    add();
    ASSERT_TRUE(waitForStatus("137 repositories"));
    auto* table = window.findChild<QTableView*>();
    table->sortByColumn(2, Qt::DescendingOrder);
    const auto stars = [&](int row) { return table->model()->index(row, 2).data().toLongLong(); };
    EXPECT_GE(stars(0), stars(1));
    EXPECT_GT(stars(0), stars(136));
}

TEST_F(QtAccounts, SignsInThroughTheBrowser) {
    OpenedAddresses browser;
    openDialog("GitHub");
    choose("Sign in with", "Browser");
    type("Client ID", "demo-client");
    type("Client secret", "demo-secret");
    pressOK();
    const QUrl address = browser.wait();
    EXPECT_EQ(message().toStdString(), "Please go on in your browser.");

    emulator_test::Client service(server().httpsPort(), {server().caFile(), "github.com"});
    const std::string form = "login=octavia&decision=allow";
    service.send("POST " +
                 address.toEncoded(QUrl::RemoveScheme | QUrl::RemoveAuthority).toStdString() +
                 " HTTP/1.1\r\nHost: github.com\r\nContent-Length: " + std::to_string(form.size()) +
                 "\r\n\r\n" + form);
    const QUrl redirect(QString::fromStdString(service.receive().header("Location").value_or("")));
    const auto follow = [&](const QByteArray& target) {
        QTcpSocket socket;
        socket.connectToHost("127.0.0.1", quint16(redirect.port()));
        socket.write("GET " + target + " HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n");
        EXPECT_TRUE(QTest::qWaitFor(
            [&] { return socket.state() == QAbstractSocket::UnconnectedState; }, patience));
        return socket.readAll().toStdString();
    };
    // What does not belong to the sign-in does not end it.
    EXPECT_THAT(follow("/favicon.ico"), testing::HasSubstr("404 Not Found"));
    EXPECT_THAT(follow("/callback?code=forged&state=forged"),
                testing::HasSubstr("belongs to another sign-in"));
    EXPECT_THAT(follow(redirect.toEncoded(QUrl::RemoveScheme | QUrl::RemoveAuthority)),
                testing::HasSubstr("You may close this page"));
    ASSERT_TRUE(waitForAccounts());
    EXPECT_TRUE(waitForStatus("137 repositories"));
}

TEST_F(QtAccounts, MayBeClosedWhileAServiceIsAsked) {
    auto hold = server().hold(page("1"));
    add();
    ASSERT_TRUE(hold.waitUntilReached());
    owner.reset();
    // The request went with the window; what other tests left open only waits for a next one.
    server().closeIdleConnections();
    EXPECT_TRUE(server().waitForOpenConnections(0));
}

/// What the README shows: run with the variable set to the file's name.
TEST_F(QtAccounts, LooksAsInAPicture) {
    add("marlow");
    fillIn("GitLab self-hosted", "octavia", "demo-token-octavia");
    pressOK();
    ASSERT_TRUE(waitForAccounts());
    ASSERT_TRUE(waitForStatus("137 repositories"));
    const QPixmap picture = window.grab();
    EXPECT_EQ(picture.size(), window.size());
    if (const char* file = std::getenv("KORVOGIT_SCREENSHOT")) {
        EXPECT_TRUE(picture.save(file, "PNG"));
    }
}

}  // namespace

int main(int argumentCount, char** arguments) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    testing::InitGoogleMock(&argumentCount, arguments);
    QApplication application(argumentCount, arguments);
    RKTMainQueue::setExecutor([thread = mainThread()](RKTMainQueue::Task task) {
        QMetaObject::invokeMethod(thread, std::move(task), Qt::QueuedConnection);
    });
    auto settings = RKTNetworkSettings::shared();
    settings.certificateAuthorityFile = server().caFile().string();
    for (const char* host : {"github.com", "api.github.com", "api.bitbucket.org"}) {
        settings.hostMappings.push_back({host, 443, "127.0.0.1", server().httpsPort()});
    }
    RKTNetworkSettings::setShared(settings);
    return RUN_ALL_TESTS();
}

#include "QtAccounts_test.moc"
