#include "inbox/url_encoder.h"
#include "inbox_fixture.h"

namespace kibo {
namespace {

class HandOff : public test::Inbox {};

TEST_F(HandOff, WebBotComesFirstThenTheProgram) {
    settings.UseBotPHP = settings.UseBotEXE = u"Y"_qs;
    settings.PHP = u"http://bot/ask"_qs;
    settings.EXE = u"/opt/bot"_qs;
    handOff.fire(u"62811"_qs, u"how much?"_qs, u"7"_qs);
    handOff.fire(u"Ani & co"_qs, u"a~~b\n\"$(c)\" 😀"_qs + QChar(u'\0'), u"7"_qs);
    EXPECT_EQ(toBots.mid(0, 2), QStringList({u"http://bot/ask?wa_no=62811&wa_text=how+much%3F&xxx=0.25"_qs,
                                             u"/opt/bot>62811~~how much?"_qs}));
    EXPECT_EQ(toBots.mid(2),
              QStringList({u"http://bot/ask?wa_no=Ani+%26+co&wa_text=a%7E%7Eb%0A%22%24%28c%29%22+%3F%00&xxx=0.25"_qs,
                           QString(u"/opt/bot>Ani & co~~a~~b\n\"$(c)\" 😀"_qs)}));
    settings.PHP.clear();
    settings.UseBotEXE = u"N"_qs;
    handOff.fire(u"62811"_qs, u"x"_qs, u"7"_qs);
    EXPECT_EQ(toBots.size(), 4);
}

TEST(UrlEncoder, EveryCodePointBecomesItsCodePageByteOrAQuestionMark) {
    // Windows' own encoder for code page 1252 is not here; its characters outside of Latin-1 are written down.
    const QString own = QString::fromUtf8("€‚ƒ„…†‡ˆ‰Š‹ŒŽ‘’“”•–—˜™š›œžŸ");
    const QByteArray codes =
        QByteArrayLiteral("%80%82%83%84%85%86%87%88%89%8A%8B%8C%8E%91%92%93%94%95%96%97%98%99%9A%9B%9C%9E%9F");
    EXPECT_EQ(urlEncoded(own), codes);
    EXPECT_EQ(urlEncoded(u"Az09 -_.~+é"_qs), QByteArrayLiteral("Az09+%2D%5F%2E%7E%2B%E9"));
    int replaced = 0;
    for (char32_t c = 0; c <= 0x10FFFF; ++c) {
        if (c >= 0xD800 && c <= 0xDFFF) continue;
        const QByteArray encoded = urlEncoded(QStringView(QChar::fromUcs4(c)).toString());
        ASSERT_TRUE(encoded.size() == 1 || (encoded.size() == 3 && encoded[0] == '%')) << static_cast<unsigned>(c);
        if (c != u'?' && encoded == "%3F") ++replaced;
    }
    EXPECT_EQ(replaced, 0x110000 - 0x800 - 256) << "the code page has 256 characters";
}

}  // namespace
}  // namespace kibo
