// The library's translations in the build tree, through the public headers alone.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <future>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "KorvoGitService/KorvoGitService.h"
#include "tests/helpers/StringsTable.h"
#include "tests/helpers/TemporaryFolder.h"

namespace {

using rkt::tests::Language;
using rkt::tests::Locale;

/// What a person reads, one text of each unit that has texts.
struct Texts {
    std::string status;
    std::string statusClass;
    std::string credential;
    std::string service;
    std::string signIn;
    std::string error;
    std::string json;
    std::string transport;

    bool operator==(const Texts&) const = default;
};

void PrintTo(const Texts& texts, std::ostream* out) {
    for (const auto& text : {texts.status, texts.statusClass, texts.credential, texts.service,
                             texts.signIn, texts.error, texts.json, texts.transport}) {
        *out << "\n    " << text;
    }
}

const Texts english{"not found",
                    "server error",
                    "Personal Access Token",
                    "GitLab self-hosted",
                    "An unknown OAuth2 error occurred.",
                    "The operation could not be completed. (Domain 7)",
                    "The text could not be read because it is not valid JSON.",
                    "The address is not an http or https address."};

/// Made on a queue's thread, unlike the other texts.
std::string transportText() {
    std::promise<std::string> description;
    RKTURLSession::sharedSession()
        ->dataTaskWithRequest(
            RKTURLRequest(RKTURL::URLWithString("ftp://127.0.0.1/").value()),
            [&description](const auto&, const auto&, const auto& error) {
                description.set_value(error ? error->localizedDescription() : "no error");
            })
        ->resume();
    return description.get_future().get();
}

Texts textsNow() {
    const auto* gitLab = RKTService::classForServiceType(RKTServiceTypeGitLabSelfHosted);
    std::optional<RKTError> json;
    RKTJSONSerialization::JSONObjectWithData("{", &json);
    return {
        RKTHTTPURLResponse::localizedStringForStatusCode(404),
        RKTHTTPURLResponse::localizedStringForStatusCode(599),
        RKTServiceCredentials::localizedNameForCredentialType(RKTServiceCredentialTypeToken)
            .value_or("no name"),
        gitLab->localizedNameForServiceType(RKTServiceTypeGitLabSelfHosted).value_or("no name"),
        gitLab->OAuth2AccessErrorWithResponseObject({{"error", "other"}})
            .value()
            .localizedDescription(),
        RKTError("Domain", 7).localizedDescription(),
        json.value().localizedDescription(),
        transportText(),
    };
}

TEST(Languages, German) {
    const Language language("de");
    EXPECT_EQ(textsNow(),
              (Texts{"nicht gefunden", "Serverfehler", "Persönliches Zugriffstoken",
                     "GitLab (selbst gehostet)", "Ein unbekannter OAuth2-Fehler ist aufgetreten.",
                     "Der Vorgang konnte nicht abgeschlossen werden. (Domain 7)",
                     "Der Text konnte nicht gelesen werden, weil er kein gültiges JSON "
                     "ist.",
                     "Die Adresse ist keine http- oder https-Adresse."}));
}

TEST(Languages, French) {
    const Language language("fr");
    EXPECT_EQ(textsNow(),
              (Texts{"introuvable", "erreur du serveur", "Jeton d’accès personnel",
                     "GitLab auto-hébergé", "Une erreur OAuth2 inconnue s’est produite.",
                     "L’opération n’a pas pu être effectuée. (Domain 7)",
                     "Le texte n’a pas pu être lu, car ce n’est pas du JSON valide.",
                     "L’adresse n’est pas une adresse http ou https."}));
}

TEST(Languages, Spanish) {
    const Language language("es");
    EXPECT_EQ(textsNow(),
              (Texts{"no encontrado", "error del servidor", "Token de acceso personal",
                     "GitLab autoalojado", "Se ha producido un error de OAuth2 desconocido.",
                     "No se ha podido completar la operación. (Domain 7)",
                     "No se ha podido leer el texto porque no es JSON válido.",
                     "La dirección no es una dirección http ni https."}));
}

TEST(Languages, BrazilianPortuguese) {
    const Language language("pt_BR");
    EXPECT_EQ(textsNow(), (Texts{"não encontrado", "erro do servidor", "Token de acesso pessoal",
                                 "GitLab auto-hospedado", "Ocorreu um erro desconhecido do OAuth2.",
                                 "Não foi possível concluir a operação. (Domain 7)",
                                 "Não foi possível ler o texto porque ele não é um JSON válido.",
                                 "O endereço não é um endereço http nem https."}));
}

TEST(Languages, Japanese) {
    const Language language("ja");
    EXPECT_EQ(textsNow(), (Texts{"見つかりません", "サーバーエラー", "個人用アクセストークン",
                                 "GitLab（セルフホスト）", "不明な OAuth2 エラーが発生しました。",
                                 "操作を完了できませんでした。 (Domain 7)",
                                 "有効な JSON ではないため、テキストを読み取れませんでした。",
                                 "アドレスが http でも https でもありません。"}));
}

TEST(Languages, SimplifiedChinese) {
    const Language language("zh_CN");
    EXPECT_EQ(textsNow(),
              (Texts{"未找到", "服务器错误", "个人访问令牌", "GitLab（自托管）",
                     "发生未知的 OAuth2 错误。", "无法完成操作。 (Domain 7)",
                     "无法读取文本，因为它不是有效的 JSON。", "该地址不是 http 或 https 地址。"}));
}

TEST(Languages, Korean) {
    const Language language("ko");
    EXPECT_EQ(textsNow(), (Texts{"찾을 수 없음", "서버 오류", "개인 액세스 토큰",
                                 "GitLab(자체 호스팅)", "알 수 없는 OAuth2 오류가 발생했습니다.",
                                 "작업을 완료할 수 없습니다. (Domain 7)",
                                 "올바른 JSON이 아니므로 텍스트를 읽을 수 없습니다.",
                                 "주소가 http 또는 https 주소가 아닙니다."}));
}

TEST(Languages, Russian) {
    const Language language("ru");
    EXPECT_EQ(
        textsNow(),
        (Texts{
            "не найдено", "ошибка сервера", "Личный токен доступа", "GitLab на собственном сервере",
            "Произошла неизвестная ошибка OAuth2.", "Не удалось завершить операцию. (Domain 7)",
            "Не удалось прочитать текст: это недопустимый JSON.", "Это не адрес http или https."}));
}

TEST(Languages, EnglishWhereThereIsNoTranslation) {
    for (const auto* const name : {"it", "pt_PT", "zh_TW", "xx"}) {
        const Language language(name);
        EXPECT_EQ(textsNow(), english) << name;
    }
}

TEST(Languages, EnglishUntilTheApplicationSetsItsLocale) {
    setenv("LANGUAGE", "de", 1);
    setenv("LC_ALL", "de_DE.UTF-8", 1);
    EXPECT_EQ(textsNow(), english);
    unsetenv("LANGUAGE");
    unsetenv("LC_ALL");
}

TEST(Languages, TheLocalesOwnWithoutAListOfLanguages) {
    const Locale locale("pt_BR.UTF-8");
    EXPECT_EQ(textsNow().status, "não encontrado");
}

TEST(Languages, TheOneOfMessagesAlone) {
    const Locale locale("fr_CA.UTF-8", LC_MESSAGES);
    EXPECT_EQ(textsNow().status, "introuvable");
}

TEST(Languages, TheFirstOfAListThatIsThere) {
    const Language language("it:ru:de");
    EXPECT_EQ(textsNow().status, "не найдено");
}

TEST(Languages, OneThatTheProcessChangesToLater) {
    {
        const Language language("ko");
        EXPECT_EQ(textsNow().status, "찾을 수 없음");
    }
    EXPECT_EQ(textsNow(), english);
    const Language language("es");
    EXPECT_EQ(textsNow().status, "no encontrado");
}

/// What the library calls credentials and services, and what it says of a sign-in.
std::vector<std::string> namesAndSignInTexts() {
    std::vector<std::string> texts;
    for (const char* type : {RKTServiceCredentialTypeToken, RKTServiceCredentialTypeOAuth2,
                             RKTServiceCredentialTypeBasic}) {
        texts.push_back(RKTServiceCredentials::localizedNameForCredentialType(type).value());
    }
    for (const char* type :
         {RKTServiceTypeAzureDevOps, RKTServiceTypeAzureDevOpsServer, RKTServiceTypeBitbucket,
          RKTServiceTypeBitbucketServer, RKTServiceTypeGitHub, RKTServiceTypeGitHubEnterprise,
          RKTServiceTypeGitLab, RKTServiceTypeGitLabSelfHosted}) {
        const auto* service = RKTService::classForServiceType(type);
        texts.push_back(service->localizedNameForServiceType(type).value());
    }
    const auto& gitHub = *RKTService::classForServiceType(RKTServiceTypeGitHub);
    RKTServiceCredentials credentials(RKTServiceTypeGitHub, RKTServiceCredentialTypeOAuth2);
    credentials.setOAuthState("state");
    std::optional<RKTError> error;
    gitHub.updateCredentials(credentials, RKTURL::URLWithString("app://x?state=forged").value(),
                             &error);
    texts.push_back(error.value().localizedDescription());
    gitHub.updateCredentials(credentials, RKTHTTPURLResponse(std::nullopt, 200, {}), "", &error);
    texts.push_back(error.value().localizedDescription());
    error = gitHub.OAuth2AccessErrorWithResponseObject({{"error", "other"}});
    texts.push_back(error.value().localizedDescription());
    return texts;
}

TEST(Languages, EveryNameAndTextOfASignInIsLookedUp) {
    const auto original = namesAndSignInTexts();
    EXPECT_THAT(original,
                testing::ElementsAre(
                    "Personal Access Token", "OAuth Access Token", "Basic Auth", "Azure DevOps",
                    "Azure DevOps Server", "Bitbucket Cloud", "Bitbucket Server", "GitHub",
                    "GitHub Enterprise", "GitLab.com", "GitLab self-hosted",
                    "Could not verify the authenticity of the OAuth2 response.",
                    "Invalid response from OAuth2 request.", "An unknown OAuth2 error occurred."));
    // Names of products are the same in every language that the library has, so it is given one
    // more, which no other test process uses.
    rkt::tests::Translations table;
    std::vector<std::string> translated;
    for (const auto& text : original) {
        table.emplace(text, "<" + text + ">");
        translated.push_back("<" + text + ">");
    }
    const std::string own = "names" + std::to_string(getpid());
    const std::filesystem::path resources = RKTKorvoGitServiceBundle().resourcePath();
    rkt::tests::writeStringsTable(resources, own, "KorvoGitService", table);
    {
        const Language language(own);
        EXPECT_EQ(namesAndSignInTexts(), translated);
    }
    std::filesystem::remove_all(resources / own);
}

TEST(Languages, AnApplicationsTableStandsBesideTheLibrarys) {
    const rkt::tests::TemporaryFolder folder;
    rkt::tests::writeStringsTable(folder.path(), "de", "Depot", {{"Depot", "Lager"}});
    const RKTBundle application(folder.path().string(), "Depot");
    // Beside what the build made, in a language that no other test process uses.
    const std::string own = "test" + std::to_string(getpid());
    const std::filesystem::path resources = RKTKorvoGitServiceBundle().resourcePath();
    rkt::tests::writeStringsTable(resources, own, "Depot", {{"Depot", "Deponejo"}});

    const Language language(own + ":de");
    EXPECT_EQ(RKTServiceLocalizedStringFromTable("Depot", "Depot"), "Deponejo");
    EXPECT_EQ(KCLocalizedString("Depot", application), "Lager");
    EXPECT_EQ(RKTServiceLocalizedString("Depot"), "Depot");
    EXPECT_EQ(textsNow().status, "nicht gefunden");
    std::filesystem::remove_all(resources / own);
}

}  // namespace
