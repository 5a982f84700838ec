// SPDX-License-Identifier: MIT
#include "GLibObjects.h"
#include "HelperFixture.h"

using namespace zviptv::test;

namespace {

/// The encoders and decoders of the two ends of the helper bus.
template <typename End>
struct Converter;

template <>
struct Converter<CConnectionHelperDBusClient>
{
    CConnectionHelperDBusClient& End() { return client; }
    CConnectionHelperDBusClient client;
};

template <>
struct Converter<CConnectionHelperDBusServer>
{
    CConnectionHelperDBusServer& End() { return *CConnectionHelperDBusServer::Instance(); }
    ServerEnd end;
};

template <typename T>
class HelperMessage : public testing::Test
{
protected:
    std::string Encoded(CMessageBuffer message)
    {
        VariantPtr const encoded(g_variant_ref_sink(m_converter.End().m_ConvertMsg(message)));
        char* const text = g_variant_print(encoded.get(), TRUE);
        std::string const result = text;
        g_free(text);
        return result;
    }

    WireEntries Decoded(char const* text)
    {
        VariantPtr const message(g_variant_ref_sink(g_variant_new_parsed(text)));
        return EntriesOf(m_converter.End().m_ConvertMsg(message.get()));
    }

    PrivateBus m_bus;
    Converter<T> m_converter;
};

using Ends = testing::Types<CConnectionHelperDBusClient, CConnectionHelperDBusServer>;
TYPED_TEST_SUITE(HelperMessage, Ends, );

TYPED_TEST(HelperMessage, EncodesPairsInOrder)
{
    EXPECT_EQ(this->Encoded(Message({{"b", "1"}, {"a", ""}, {"b", "2"}})),
              "([('b', '1'), ('a', ''), ('b', '2')],)");
    EXPECT_EQ(this->Encoded(CMessageBuffer()), "(@a(ss) [],)");
}

TYPED_TEST(HelperMessage, CutsValuesAtTheirFirstZeroByte)
{
    EXPECT_EQ(this->Encoded(Message({{"a", std::string("1\0002", 3)}, {"b", std::string("\0x", 2)}})),
              "([('a', '1'), ('b', '')],)");
}

TYPED_TEST(HelperMessage, EncodesToAFloatingValue)
{
    CMessageBuffer message = Message({{"a", "1"}});
    GVariant* const encoded = this->m_converter.End().m_ConvertMsg(message);
    EXPECT_TRUE(g_variant_is_floating(encoded));
    EXPECT_STREQ(g_variant_get_type_string(encoded), "(a(ss))");
    g_variant_unref(encoded);
}

TYPED_TEST(HelperMessage, RefusesTextThatIsNotUtf8)
{
    CMessageBuffer value = Message({{"fine", "1"}, {"a", "\xff"}});
    EXPECT_EQ(this->m_converter.End().m_ConvertMsg(value), nullptr);
    CMessageBuffer key = Message({{"\xff", "1"}});
    EXPECT_EQ(this->m_converter.End().m_ConvertMsg(key), nullptr);
}

TYPED_TEST(HelperMessage, DecodesPairsInOrder)
{
    EXPECT_EQ(this->Decoded("([('b', '1'), ('a', ''), ('b', '22')],)"),
              Entries({{"b", "1"}, {"a", ""}, {"b", "22"}}));
    EXPECT_EQ(this->Decoded("(@a(ss) [],)"), WireEntries());
}

TYPED_TEST(HelperMessage, RefusesOtherTypes)
{
    EXPECT_EQ(this->m_converter.End().m_ConvertMsg(static_cast<GVariant*>(nullptr)).Size(), 0);
    for (char const* const text : {"()", "('a',)", "[('a', 'b')]", "({'a': 'b'},)", "([('a', 'b', 'c')],)"}) {
        EXPECT_EQ(this->Decoded(text), WireEntries()) << text;
    }
}

} // namespace
