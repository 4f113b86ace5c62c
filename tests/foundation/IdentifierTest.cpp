#include "support/ImportPatch.h"

#include <gtest/gtest.h>
#include <tessel/foundation/identifier.h>

#include <rpc.h>

#include <string>

namespace {

constexpr wchar_t kText[] = L"00112233-4455-6677-8899-aabbccddeeff";
constexpr wchar_t kNil[] = L"00000000-0000-0000-0000-000000000000";

COCuid Parsed() {
    COCuid uid;
    EXPECT_EQ(uid = kText, 0);
    return uid;
}

Stub WithoutText() {
    return Failing("UuidToStringW", &UuidToStringW, RPC_S_OUT_OF_MEMORY);
}

bool IsZero(const OCUID& record) {
    const OCUID zero{};
    return memcmp(&record, &zero, sizeof zero) == 0;
}

} // namespace

TEST(Identifier, IsMadeOnceWithItsText) {
    COCuid uid(1);
    ASSERT_EQ(uid.IsPresent(), 1);
    EXPECT_EQ(COCuid(2).IsPresent(), 0);
    const COCuid copy(uid);
    EXPECT_EQ(uid.Create(), OCUID_ALREADY_HELD);
    EXPECT_TRUE(uid == copy);
    OCUID read{};
    ASSERT_EQ(COCuid::ToUid(std::wstring(uid.GetString()).data(), &read), 0);
    EXPECT_TRUE(uid == &read);
    EXPECT_EQ(COCuid::oInit.IsPresent(), 0);
}

TEST(Identifier, FailureOfTheSystemLeavesNone) {
    COCuid uid;
    RPC_STATUS status = RPC_S_UUID_NO_ADDRESS;
    const ImportPatch create("UuidCreate", &UuidCreate, [&status](UUID* made) { return UuidCreate(made), status; });
    EXPECT_EQ(uid.Create(), OCUID_NOT_CREATED);
    EXPECT_EQ(uid.IsPresent(), 0);
    status = RPC_S_UUID_LOCAL_ONLY;
    EXPECT_EQ(uid.Create(), 0UL);
    const OCUID made = *uid.GetUid();
    const ImportPatch convert(WithoutText());
    EXPECT_EQ(COCuid(1).IsPresent(), 0);
    wchar_t text[] = L"as it was";
    EXPECT_EQ(COCuid::ToString(&made, text, 10), 1);
    EXPECT_STREQ(text, L"as it was");
    EXPECT_EQ(uid.SetUid(&made, 1), 0);
    EXPECT_EQ(uid.IsPresent(), 0);
}

TEST(Identifier, TextIsOpenWhenTheRoomIsFilledOdd160) {
    const COCuid uid = Parsed();
    wchar_t text[] = L"########################################";
    EXPECT_EQ(COCuid::ToString(uid.GetUid(), text, 36), 0);
    EXPECT_EQ(text, std::wstring(kText) + L"####");
    const int failures[] = {COCuid::ToString(nullptr, text, 36), COCuid::ToString(uid.GetUid(), nullptr, 36),
                            COCuid::ToUid(text, nullptr)};
    for (const int failed : failures) EXPECT_EQ(failed, 1);
}

TEST(Identifier, OnlyTextsOfIdentifiersAreRead) {
    COCuid uid;
    const std::wstring base(kText);
    for (const std::wstring& text : {std::wstring(), base + L"0", base.substr(1) + L"g", std::wstring(1000, L'x')}) {
        EXPECT_EQ(uid = kText, 0) << "in place of what is held";
        EXPECT_EQ(uid.GetUid()->Uuid.Data1, 0x00112233UL);
        EXPECT_EQ(uid = text.c_str(), 1) << text.size();
        EXPECT_TRUE(uid.IsPresent() == 0 && IsZero(*uid.GetUid())) << text.size();
        EXPECT_EQ(uid.GetString(), text.substr(0, 63));
    }
    uid = kText;
    EXPECT_EQ(uid = uid.GetString(), 0);
}

TEST(Identifier, ComparisonLooksAtTheOthersPresenceInOneFormOnlyOdd161) {
    const COCuid uid = Parsed();
    OCUID record = *uid.GetUid();
    EXPECT_TRUE(uid == Parsed() && uid == &uid && uid == &record);
    EXPECT_FALSE(uid != Parsed() || uid != &uid || uid != &record);
    record.Reserved[15] = 1;
    EXPECT_FALSE(uid == &record || uid == static_cast<OCUID*>(nullptr) || uid == static_cast<COCuid*>(nullptr));
    COCuid padded;
    padded = &record;
    EXPECT_TRUE(padded == &record && padded == uid && padded == &uid);
    COCuid nil;
    nil.SetToZero();
    const COCuid none;
    EXPECT_TRUE(nil == &none);
    EXPECT_FALSE(nil == none || none == nil || none == &nil || none == none.GetUid() || nil != nil.GetUid());
}

TEST(Identifier, Odd162And163WaysToTakeOneOverDifferInWhatTheyReturnAndReplace) {
    const COCuid source = Parsed();
    const COCuid none;
    COCuid nil;
    nil.SetToZero();
    /// What was returned and what is held then.
    const auto outcome = [](int returned, const COCuid& uid) {
        return std::to_wstring(returned) + (uid.IsPresent() != 0 ? uid.GetString() : L"-");
    };
    const auto set = [&](const auto* from, COCuid uid, int overwrite) {
        return outcome(uid.SetUid(from, overwrite), uid);
    };
    const auto assign = [&](const auto* from, COCuid uid) { return outcome(uid = from, uid); };
    const std::wstring text(kText);
    const std::wstring zeros(kNil);
    const auto expectSets = [&](const auto* from, const auto* fromNothing) {
        EXPECT_EQ(set(from, none, 0), L"1" + text);
        EXPECT_EQ(set(from, nil, 2), L"0" + zeros);
        EXPECT_EQ(set(from, nil, 1), L"1" + text);
        EXPECT_EQ(set(fromNothing, nil, 1), L"0-");
    };
    expectSets(&source, &none);
    expectSets(source.GetUid(), static_cast<const OCUID*>(nullptr));
    EXPECT_EQ(assign(static_cast<const OCUID*>(nullptr), none), L"0-");
    EXPECT_EQ(assign(static_cast<const COCuid*>(nullptr), none), L"1-");
    EXPECT_EQ(assign(source.GetUid(), none), L"1" + text);
    EXPECT_EQ(assign(source.GetUid(), nil), L"0" + zeros);
    EXPECT_EQ(assign(&source, nil), L"0" + text);
    EXPECT_EQ(assign(&none, nil), L"1" + zeros);
    const ImportPatch convert(WithoutText());
    COCuid uid;
    EXPECT_EQ(uid = source.GetUid(), 1);
    EXPECT_EQ(uid.IsPresent(), 1);
    EXPECT_STREQ(uid.GetString(), L"");
}

TEST(Identifier, EndOfTheTextStaysWhenItIsClearedOdd164) {
    COCuid uid = Parsed();
    uid.Clear();
    EXPECT_EQ(std::wstring(uid.GetString(), 37), std::wstring(32, L'\0') + L"eeff" + L'\0');
    EXPECT_TRUE(uid.IsPresent() == 0 && IsZero(*uid.GetUid()));
}
