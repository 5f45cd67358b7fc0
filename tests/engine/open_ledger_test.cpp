#include "engine/open_ledger.h"

#include <gtest/gtest.h>

namespace kibo {
namespace {

const QString kAni = u"6281111111111"_qs, kBudi = u"6282222222222"_qs, kDummy = u"6289999999999"_qs;
const QString kFamily = OpenLedger::entryKey(u"Family"_qs);

/// A page on which titled chats come up one after the other, 100 ms apart, and the ledger over it.
struct Page {
    OpenChat chat;
    OpenLedger ledger;
    qint64 now = 0;

    void comesUp(const QString& title, const QString& number) {
        ++chat.serial;
        chat.open = true;
        chat.title = title;
        chat.number = number;
        chat.titles.append(title);
    }
    void close() {
        chat.open = false;
        chat.title.clear();
        chat.number.clear();
    }
    void look() { ledger.observe(chat, now); }
    /// The chats that are known to be open, by initial, and "…" while another may still come up.
    std::string known() const {
        std::string known;
        for (const auto& [number, initial] : {std::pair{kAni, 'A'}, {kBudi, 'B'}, {kDummy, 'D'}, {kFamily, 'F'}})
            if (ledger.isOpen(number)) known += initial;
        return ledger.settled(now) ? known : known + "…";
    }
};

/// What happens, and what is known afterwards.
struct Step {
    std::function<void(Page&)> happens;
    const char* known;
    int takesMs = 100;
};

/// As the gateway clicks: with the earlier chat closed.
Step click(const QString& number, const char* known = "…") {
    const auto happens = [=](Page& page) {
        page.close();
        page.ledger.clicked(number, page.chat, page.now);
    };
    return {happens, known};
}
Step clickOver(const QString& number, const char* known = "…") {
    return {[=](Page& page) { page.ledger.clicked(number, page.chat, page.now); }, known};
}
Step clickName(const QString& title) {
    return {[=](Page& page) { page.ledger.clickedName(title, page.chat, page.now); }, "…"};
}
Step up(const QString& title, const char* known, const QString& number = {}) {
    const auto happens = [=](Page& page) {
        page.comesUp(title, number);
        page.look();
    };
    return {happens, known};
}
/// What changes in the page before the next look.
Step meanwhile(const std::function<void(Page&)>& happens, const char* known) {
    return {happens, known};
}
Step look(const char* known) {
    return {&Page::look, known};
}
Step wait(int ms, const char* known) {
    return {[](Page&) {}, known, ms};
}
Step notice(const QString& text, const QString& about, const char* known) {
    return {[=](Page& page) { EXPECT_EQ(page.ledger.refusedBy(text), about); }, known};
}

TEST(OpenLedger, KnowsAChatOnlyWhereItCanBeNoOther) {
    const auto personClicks = [](Page& page) { ++page.chat.personClicks; };
    const auto aniPasses = [](Page& page) { page.comesUp(u"Ani"_qs, {}); };
    const auto titleIsDrawn = [](Page& page) { page.chat.title = page.chat.titles.last() = u"Ani"_qs; };
    const auto reloaded = [](Page& page) { page.chat = OpenChat(); };
    const auto nameForgotten = [](Page& page) { page.ledger.forgetName(kAni); };
    const auto blindly = [](Page& page) { page.ledger.clickedBlindly(kFamily, page.now); };
    const auto nameBlindly = [](Page& page) { page.ledger.clickedNameBlindly(u"Citra"_qs, page.now); };
    const QString dummy = u"Our dummy"_qs, invalid = u"Phone number shared via url is invalid."_qs;

    const std::pair<const char*, std::vector<Step>> scenarios[] = {
        {"alone, it is the one asked for", {click(kAni), up(u"Ani"_qs, "A"), meanwhile(&Page::close, "A"), look("")}},
        {"not the one that stood there before",
         {up(u"Somebody"_qs, ""), clickOver(kAni), look("…"), up(u"Ani"_qs, "A")}},
        {"late, it can be that of an earlier click",
         {click(kDummy), click(kAni), up(u"A name"_qs, "…"), wait(OpenLedger::kGiveUpMs, "")}},
        {"a name seen before tells them apart",
         {click(kDummy), up(dummy, "D"), click(kDummy), click(kAni), up(dummy, "D…"), up(u"Ani"_qs, "A")}},
        {"a number without name is not taken for a name",
         {click(kDummy), up(u"+62 899-9999-9999"_qs, "D"), click(kAni), click(kDummy), up(u"Ani"_qs, "A…"),
          up(u"+62 899-9999-9999"_qs, "D"), up(u"Dummy's name, drawn late"_qs, "D")}},
        {"it came and went between two looks",
         {click(kDummy), up(dummy, "D"), click(kAni), click(kDummy), meanwhile(aniPasses, "…"), up(dummy, "D")}},
        {"a person may have opened it, unless its messages name it or the click was before",
         {click(kAni), meanwhile(personClicks, "…"), up(u"Bob"_qs, "…"), up(u"Ani"_qs, "A", kAni), click(kBudi),
          up(u"Budi"_qs, "B")}},
        {"title or messages name another number, or that of an earlier click",
         {click(kAni), up(u"+62 822-2222-2222"_qs, "…"), up(u"Looks like Ani"_qs, "…", kBudi), click(kBudi),
          up(u"+62 811-1111-1111"_qs, "A…")}},
        {"asked for again, it need not change, and may be drawn anew",
         {click(kDummy), up(dummy, "D"), clickOver(kDummy, "D"), up(dummy, "D")}},
        {"a name drawn late is awaited, a changed one not trusted",
         {click(kAni), up({}, "…"), meanwhile(titleIsDrawn, "…"), look("A"), up(u"Budi"_qs, "")}},
        {"an entry is recognised by its title only, and a notice is never about it",
         {up(u"Family"_qs, ""), clickOver(kFamily), clickOver(kAni), up(u"Somebody"_qs, "A…"),
          meanwhile(personClicks, "A…"), up(u"\u00a0FAMILY\u200e"_qs, "F"), meanwhile(blindly, "…"),
          notice(invalid, {}, "…")}},
        {"a notice is about the number that it names, else about the only one left",
         {click(kAni), click(kBudi), notice(u"The number +62 811-1111-1111 isn't on WhatsApp."_qs, kAni, "…"),
          notice(invalid, kBudi, "")}},
        {"a reloaded page owes nothing", {up(u"Somebody"_qs, ""), click(kAni), meanwhile(reloaded, "…"), look("")}},
        {"a contact that got another name is found after one failure",
         {click(kAni), up(u"Ani"_qs, "A"), click(kAni), up(u"Ani Renamed"_qs, "…"), meanwhile(nameForgotten, "…"),
          click(kAni), up(u"Ani Renamed"_qs, "A")}},
        {"clicked in the list it is not a number's, and with the number's name it may be either",
         {click(kDummy), clickName(u"Ani"_qs), up(u"Ani"_qs, "…"), up(u"Dummy"_qs, "D"), clickName(u"Budi"_qs),
          clickOver(kBudi), up(u"Budi"_qs, "…"), meanwhile(nameBlindly, "…"), wait(OpenLedger::kGiveUpMs, "…"),
          wait(1, "")}},
    };
    for (const auto& [name, steps] : scenarios) {
        Page page;
        for (std::size_t i = 0; i < steps.size(); ++i) {
            page.now += steps[i].takesMs;
            steps[i].happens(page);
            EXPECT_EQ(page.known(), steps[i].known) << name << ", step " << i + 1;
        }
    }
}

}  // namespace
}  // namespace kibo
