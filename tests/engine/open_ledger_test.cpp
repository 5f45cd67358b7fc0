#include "engine/open_ledger.h"

#include <gtest/gtest.h>

namespace kibo {
namespace {

const QString kAni = QStringLiteral("6281111111111");
const QString kBudi = QStringLiteral("6282222222222");
const QString kDummy = QStringLiteral("6289999999999");

/// A page on which named chats come up one after the other.
class Ledger : public ::testing::Test {
 protected:
    OpenChat comesUp(const QString& title, const QString& number = {}) {
        ++chat.serial;
        chat.open = true;
        chat.title = title;
        chat.number = number;
        chat.titles.append(title);
        return chat;
    }
    OpenChat closed() {
        chat.open = false;
        chat.title.clear();
        chat.number.clear();
        return chat;
    }

    OpenChat chat;
    OpenLedger ledger;
};

TEST_F(Ledger, ChatThatComesUpAloneIsTheOneAskedFor) {
    ledger.clicked(kAni, closed(), 0);
    EXPECT_FALSE(ledger.isOpen(kAni));
    EXPECT_FALSE(ledger.settled(0));
    ledger.observe(comesUp(QStringLiteral("Ani")), 100);
    EXPECT_TRUE(ledger.isOpen(kAni));
    EXPECT_TRUE(ledger.settled(100));
    ledger.observe(closed(), 200);
    EXPECT_FALSE(ledger.isOpen(kAni));
}

TEST_F(Ledger, ChatThatStoodThereBeforeIsNot) {
    ledger.observe(comesUp(QStringLiteral("Somebody")), 0);
    ledger.clicked(kAni, chat, 0);
    ledger.observe(chat, 100);
    EXPECT_FALSE(ledger.isOpen(kAni));
    ledger.observe(comesUp(QStringLiteral("Ani")), 200);
    EXPECT_TRUE(ledger.isOpen(kAni));
}

TEST_F(Ledger, LateChatOfAnEarlierClickIsNotTakenForTheNewOne) {
    ledger.clicked(kDummy, closed(), 0);
    ledger.clicked(kAni, closed(), 500);
    ledger.observe(comesUp(QStringLiteral("A name")), 600);
    EXPECT_FALSE(ledger.isOpen(kAni)) << "it can be either";
    EXPECT_FALSE(ledger.isOpen(kDummy));
    EXPECT_FALSE(ledger.settled(600));
    EXPECT_TRUE(ledger.settled(600 + OpenLedger::kGiveUpMs));
}

TEST_F(Ledger, NameSeenBeforeTellsThemApart) {
    ledger.clicked(kDummy, closed(), 0);
    ledger.observe(comesUp(QStringLiteral("Our dummy")), 100);
    ledger.clicked(kDummy, closed(), 1000);
    ledger.clicked(kAni, closed(), 1100);
    ledger.observe(comesUp(QStringLiteral("Our dummy")), 1200);
    EXPECT_TRUE(ledger.isOpen(kDummy));
    ledger.observe(comesUp(QStringLiteral("Ani")), 1300);
    EXPECT_TRUE(ledger.isOpen(kAni));
    EXPECT_TRUE(ledger.settled(1300));
}

TEST_F(Ledger, NumberWithoutNameIsNotTakenForAName) {
    ledger.clicked(kDummy, closed(), 0);
    ledger.observe(comesUp(QStringLiteral("+62 899-9999-9999")), 100);
    ledger.clicked(kAni, closed(), 1000);
    ledger.clicked(kDummy, closed(), 3000);
    ledger.observe(comesUp(QStringLiteral("Ani")), 4000);
    EXPECT_TRUE(ledger.isOpen(kAni));
    ledger.observe(comesUp(QStringLiteral("+62 899-9999-9999")), 4100);
    EXPECT_TRUE(ledger.settled(4100));
    ledger.observe(comesUp(QStringLiteral("Dummy's name, drawn late")), 4200);
    EXPECT_TRUE(ledger.isOpen(kDummy));
}

TEST_F(Ledger, ChatsThatCameAndWentBetweenTwoLooksAreSettled) {
    ledger.clicked(kDummy, closed(), 0);
    ledger.observe(comesUp(QStringLiteral("Our dummy")), 100);
    ledger.clicked(kAni, closed(), 1000);
    ledger.clicked(kDummy, closed(), 3000);
    comesUp(QStringLiteral("Ani"));
    ledger.observe(comesUp(QStringLiteral("Our dummy")), 5000);
    EXPECT_TRUE(ledger.settled(5000));
    EXPECT_TRUE(ledger.isOpen(kDummy));
}

TEST_F(Ledger, ChatThatAPersonMayHaveOpenedIsNotTakenForOurs) {
    ledger.clicked(kAni, closed(), 0);
    chat.personClicks = 1;
    ledger.observe(comesUp(QStringLiteral("Bob")), 100);
    EXPECT_FALSE(ledger.isOpen(kAni));
    ledger.observe(comesUp(QStringLiteral("Ani"), kAni), 4000);
    EXPECT_TRUE(ledger.isOpen(kAni)) << "named by its messages";
    ledger.clicked(kBudi, closed(), 5000);
    ledger.observe(comesUp(QStringLiteral("Budi")), 5100);
    EXPECT_TRUE(ledger.isOpen(kBudi)) << "the click was before";
}

TEST_F(Ledger, WhatTheChatNamesDecides) {
    ledger.clicked(kAni, closed(), 0);
    ledger.observe(comesUp(QStringLiteral("+62 822-2222-2222")), 100);
    EXPECT_FALSE(ledger.isOpen(kAni)) << "titled with another number";
    ledger.observe(comesUp(QStringLiteral("Looks like Ani"), kBudi), 200);
    EXPECT_FALSE(ledger.isOpen(kAni)) << "its messages name another number";
    ledger.clicked(kBudi, closed(), 300);
    ledger.observe(comesUp(QStringLiteral("+62 811-1111-1111")), 400);
    EXPECT_TRUE(ledger.isOpen(kAni)) << "an earlier click, but named";
    EXPECT_FALSE(ledger.isOpen(kBudi));
}

TEST_F(Ledger, SameChatAskedForAgainNeedsNoChange) {
    ledger.clicked(kDummy, closed(), 0);
    ledger.observe(comesUp(QStringLiteral("Our dummy")), 100);
    ledger.clicked(kDummy, chat, 200);
    EXPECT_TRUE(ledger.isOpen(kDummy));
    EXPECT_TRUE(ledger.settled(200));
    ledger.observe(comesUp(QStringLiteral("Our dummy")), 300);
    EXPECT_TRUE(ledger.isOpen(kDummy)) << "drawn anew";
}

TEST_F(Ledger, NameDrawnLateIsAwaitedAndAChangedOneIsNotTrusted) {
    ledger.clicked(kAni, closed(), 0);
    ledger.observe(comesUp({}), 100);
    EXPECT_FALSE(ledger.isOpen(kAni));
    chat.title = QStringLiteral("Ani");
    chat.titles.last() = chat.title;
    ledger.observe(chat, 200);
    EXPECT_TRUE(ledger.isOpen(kAni));
    ledger.observe(comesUp(QStringLiteral("Budi")), 300);  // the operator has opened another chat
    EXPECT_FALSE(ledger.isOpen(kAni));
}

TEST_F(Ledger, EntryIsRecognisedByItsTitleOnly) {
    const QString family = OpenLedger::entryKey(QStringLiteral("Family"));
    ledger.observe(comesUp(QStringLiteral("Family")), 0);
    ledger.clicked(family, chat, 0);
    EXPECT_FALSE(ledger.isOpen(family)) << "it stood there before";
    ledger.clicked(kAni, chat, 100);
    ledger.observe(comesUp(QStringLiteral("Somebody")), 200);
    EXPECT_FALSE(ledger.isOpen(family));
    EXPECT_TRUE(ledger.isOpen(kAni)) << "the entry's click can't have brought this";
    chat.personClicks = 1;
    ledger.observe(comesUp(QStringLiteral("\u00a0FAMILY\u200e")), 300);
    EXPECT_TRUE(ledger.isOpen(family));
    EXPECT_TRUE(ledger.settled(300));
    ledger.clickedBlindly(family, 400);
    EXPECT_EQ(ledger.refusedBy(QStringLiteral("Phone number shared via url is invalid.")), QString());
    EXPECT_FALSE(ledger.settled(400)) << "a notice is never about an entry";
}

TEST_F(Ledger, NoticeIsAboutTheNumberItNames) {
    ledger.clicked(kAni, closed(), 0);
    ledger.clicked(kBudi, closed(), 100);
    EXPECT_EQ(ledger.refusedBy(QStringLiteral("The number +62 811-1111-1111 isn't on WhatsApp.")), kAni);
    EXPECT_FALSE(ledger.settled(100));
    EXPECT_EQ(ledger.refusedBy(QStringLiteral("Phone number shared via url is invalid.")), kBudi)
        << "the only one left";
    EXPECT_TRUE(ledger.settled(100));
}

TEST_F(Ledger, ReloadedPageOwesNothing) {
    ledger.observe(comesUp(QStringLiteral("Somebody")), 0);
    ledger.clicked(kAni, closed(), 100);
    ledger.observe(OpenChat{}, 200);
    EXPECT_TRUE(ledger.settled(200));
}

TEST_F(Ledger, ContactThatGotAnotherNameIsFoundAgainAfterOneFailure) {
    ledger.clicked(kAni, closed(), 0);
    ledger.observe(comesUp(QStringLiteral("Ani")), 100);
    ledger.clicked(kAni, closed(), 1000);
    ledger.observe(comesUp(QStringLiteral("Ani Renamed")), 1100);
    EXPECT_FALSE(ledger.isOpen(kAni));
    ledger.forgetName(kAni);
    ledger.clicked(kAni, closed(), 2000);
    ledger.observe(comesUp(QStringLiteral("Ani Renamed")), 2100);
    EXPECT_TRUE(ledger.isOpen(kAni));
}

TEST_F(Ledger, ChatClickedInTheListIsNotTakenForThatOfANumber) {
    ledger.clicked(kDummy, closed(), 0);
    ledger.clickedName(QStringLiteral("Ani"), chat, 100);
    ledger.observe(comesUp(QStringLiteral("Ani")), 200);
    EXPECT_FALSE(ledger.isOpen(kDummy)) << "though it is the only number that waits";
    EXPECT_FALSE(ledger.settled(200));
    ledger.observe(comesUp(QStringLiteral("Dummy")), 300);
    EXPECT_TRUE(ledger.isOpen(kDummy));
    EXPECT_TRUE(ledger.settled(300));

    // A number may show the same name: then it is either, and no text goes there.
    ledger.clickedName(QStringLiteral("Budi"), chat, 400);
    ledger.clicked(kBudi, chat, 500);
    ledger.observe(comesUp(QStringLiteral("Budi")), 600);
    EXPECT_FALSE(ledger.isOpen(kBudi));
    ledger.clickedNameBlindly(QStringLiteral("Citra"), 700);
    EXPECT_FALSE(ledger.settled(700 + OpenLedger::kGiveUpMs));
    EXPECT_TRUE(ledger.settled(701 + OpenLedger::kGiveUpMs));
}

}  // namespace
}  // namespace kibo
