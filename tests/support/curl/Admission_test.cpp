#include "support/curl/Admission.h"

#include <gmock/gmock.h>

namespace {

using rkt::Admission;
using testing::ElementsAre;
using testing::IsEmpty;
using Kind = Admission::Kind;

class AdmissionToAPeer : public testing::Test {
protected:
    static constexpr std::size_t limit = 3;
    Admission admission;

    void enter(Admission::Token first, Admission::Token last, Kind kind = Kind::Shares) {
        for (auto token = first; token <= last; ++token) admission.enter(token, "peer", kind);
    }
    void began(Admission::Token token, int port) { admission.began(token, {"127.0.0.1", port}); }
    std::vector<Admission::Token> admit(std::size_t connections = limit) {
        return admission.admit(connections);
    }
};

TEST_F(AdmissionToAPeer, BeginsWithOne) {
    enter(1, 10);
    EXPECT_THAT(admit(), ElementsAre(1));
    EXPECT_THAT(admit(), IsEmpty());
}

TEST_F(AdmissionToAPeer, GoesOnWithAsManyAsThereMayBeConnections) {
    enter(1, 10);
    admit();
    began(1, 1001);
    EXPECT_THAT(admit(), ElementsAre(2, 3));
    began(2, 1002);
    began(3, 1003);
    EXPECT_THAT(admit(), IsEmpty());
    admission.leave(2);
    EXPECT_THAT(admit(), ElementsAre(4));
}

TEST_F(AdmissionToAPeer, TakesMoreOnceThereMayBeMoreConnections) {
    enter(1, 10);
    admit();
    began(1, 1001);
    EXPECT_THAT(admit(), ElementsAre(2, 3));
    EXPECT_THAT(admit(5), ElementsAre(4, 5));
}

TEST_F(AdmissionToAPeer, TakesAllOnceTwoAreOnOneConnection) {
    enter(1, 6);
    admit();
    began(1, 1001);
    admit();
    began(2, 1001);
    EXPECT_THAT(admit(), ElementsAre(4, 5, 6));
    enter(7, 8);
    EXPECT_THAT(admit(), ElementsAre(7, 8));
}

TEST_F(AdmissionToAPeer, BeginsAnewWithOneWhenNoneIsLeft) {
    enter(1, 2);
    admit();
    began(1, 1001);
    admit();
    began(2, 1001);
    admission.leave(1);
    admission.leave(2);
    enter(3, 6);
    EXPECT_THAT(admit(), ElementsAre(3));
}

TEST_F(AdmissionToAPeer, TriesTheNextWhenTheFirstGetsNoConnection) {
    enter(1, 10);
    admit();
    admission.leave(1);
    EXPECT_THAT(admit(), ElementsAre(2));
}

TEST_F(AdmissionToAPeer, SkipsThoseThatLeftBeforeTheirTurn) {
    enter(1, 10);
    admit();
    admission.leave(2);
    admission.leave(3);
    began(1, 1001);
    EXPECT_THAT(admit(), ElementsAre(4, 5));
}

TEST_F(AdmissionToAPeer, LetsThoseThatNeedTheirOwnConnectionWaitForTheNumberAlone) {
    enter(1, 10, Kind::Alone);
    EXPECT_THAT(admit(), ElementsAre(1, 2, 3));
    began(1, 1001);
    EXPECT_THAT(admit(), IsEmpty());
    admission.leave(1);
    admission.leave(2);
    EXPECT_THAT(admit(), ElementsAre(4, 5));
}

TEST_F(AdmissionToAPeer, GivesBothKindsTheirTurnsInTheOrderOfTheirComing) {
    enter(1, 1);
    admit();
    began(1, 1001);
    enter(2, 2, Kind::Alone);
    enter(3, 3);
    enter(4, 4, Kind::Alone);
    EXPECT_THAT(admit(), ElementsAre(2, 3));
    admission.leave(3);
    EXPECT_THAT(admit(), ElementsAre(4));
}

TEST_F(AdmissionToAPeer, CountsSharedConnectionsOnceBesideThoseOfOne) {
    enter(1, 2);
    admit();
    began(1, 1001);
    admit();
    began(2, 1001);
    enter(3, 6, Kind::Alone);
    EXPECT_THAT(admit(), ElementsAre(3, 4));
}

TEST_F(AdmissionToAPeer, CountsATransferThatBeganAgainOnItsNewConnection) {
    enter(1, 10);
    admit();
    began(1, 1001);
    began(1, 1002);
    EXPECT_THAT(admit(), ElementsAre(2, 3));
    began(2, 1001);
    began(3, 1003);
    EXPECT_THAT(admit(), IsEmpty());
}

TEST_F(AdmissionToAPeer, HasNoLimitWhenItIsZero) {
    enter(1, 5, Kind::Alone);
    EXPECT_THAT(admit(0), ElementsAre(1, 2, 3, 4, 5));
}

TEST_F(AdmissionToAPeer, IsNotHeldUpByAnother) {
    enter(1, 2);
    admission.enter(3, "other", Kind::Shares);
    EXPECT_THAT(admit(), testing::UnorderedElementsAre(1, 3));
}

}  // namespace
