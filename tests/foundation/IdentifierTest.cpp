#include "support/ImportPatch.h"

#include <gtest/gtest.h>
#include <tessel/foundation/identifier.h>

#include <rpc.h>

#include <string>

namespace {

constexpr wchar_t kText[] = L"00112233-4455-6677-8899-aabbccddeeff";
constexpr wchar_t kNil[] = L"00000000-0000-0000-0000-000000000000";
constexpr const COCuid* kNoObject = nullptr;
constexpr const OCUID* kNoRecord = nullptr;

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
    COCuid other(1);
    EXPECT_TRUE(other != uid && other != &uid && other != &read);
    EXPECT_EQ(COCuid::oInit.IsPresent(), 0);
}

TEST(Identifier, FailureOfTheSystemLeavesNone) {
    COCuid uid;
    {
        const ImportPatch create(Failing("UuidCreate", &UuidCreate, RPC_S_UUID_NO_ADDRESS));
        EXPECT_EQ(uid.Create(), OCUID_NOT_CREATED);
        EXPECT_EQ(uid.IsPresent(), 0);
    }
    const ImportPatch create("UuidCreate", &UuidCreate, [](UUID* made) {
        UuidCreate(made);
        return RPC_S_UUID_LOCAL_ONLY;
    });
    EXPECT_EQ(uid.Create(), 0UL);
    const OCUID made = *uid.GetUid();
    const ImportPatch convert(WithoutText());
    COCuid none;
    EXPECT_EQ(none.Create(), OCUID_NOT_CREATED);
    EXPECT_EQ(none.IsPresent(), 0);
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
    EXPECT_EQ(COCuid::ToString(nullptr, text, 40) + COCuid::ToString(uid.GetUid(), nullptr, 40), 2);
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
    EXPECT_EQ(uid = static_cast<const wchar_t*>(nullptr), 1);
    EXPECT_EQ(COCuid::ToUid(nullptr, nullptr), 1);
    OCUID read = *Parsed().GetUid();
    EXPECT_EQ(COCuid::ToUid(nullptr, &read), 0);
    EXPECT_TRUE(IsZero(read));
    uid = kText;
    EXPECT_EQ(uid = uid.GetString(), 0);
}

TEST(Identifier, ComparisonLooksAtTheOthersPresenceInOneFormOnlyOdd161) {
    const COCuid uid = Parsed();
    OCUID record = *uid.GetUid();
    EXPECT_TRUE(uid == Parsed() && uid == &uid && uid == &record);
    EXPECT_FALSE(uid != Parsed() || uid != &uid || uid != &record);
    record.Reserved[15] = 1;
    EXPECT_FALSE(uid == &record);
    COCuid padded;
    COCuid set;
    EXPECT_EQ((padded = &record) + set.SetUid(&record, 0), 2);
    EXPECT_TRUE(padded == &record && set == &record && padded == uid && padded == &uid);
    COCuid nil;
    nil.SetToZero();
    const COCuid none;
    const OCUID zero{};
    EXPECT_TRUE(nil == &none);
    EXPECT_FALSE(nil == none || none == nil || none == &nil || none == &zero || nil == kNoObject || nil == kNoRecord);
}

TEST(Identifier, IsTakenOverInPlaceOfAnotherOnlyWhenAskedTo) {
    COCuid nil = Parsed();
    nil.SetToZero();
    const COCuid held = Parsed();
    COCuid uid = nil;
    EXPECT_EQ(uid.SetUid(&held, 0) + uid.SetUid(held.GetUid(), 2), 0);
    EXPECT_TRUE(uid == nil);
    EXPECT_EQ(uid.SetUid(&held, 1), 1);
    EXPECT_TRUE(uid == held);
    EXPECT_EQ(uid.SetUid(nil.GetUid(), 1), 1);
    EXPECT_STREQ(uid.GetString(), kNil);
    COCuid first;
    COCuid second;
    EXPECT_EQ(first.SetUid(&held, 0) + second.SetUid(held.GetUid(), 0), 2) << "nothing is held there";
    const COCuid none;
    const auto isCleared = [&nil](const auto* source) {
        COCuid cleared = nil;
        return cleared.SetUid(source, 1) == 0 && cleared.IsPresent() == 0;
    };
    EXPECT_TRUE(isCleared(&none) && isCleared(kNoObject) && isCleared(kNoRecord));
}

TEST(Identifier, Odd162And163AssignmentsDifferInWhatTheyReturnAndReplace) {
    const COCuid held = Parsed();
    const COCuid none;
    COCuid uid;
    {
        const ImportPatch convert(WithoutText());
        EXPECT_EQ(uid = held.GetUid(), 1);
    }
    EXPECT_EQ(uid.IsPresent(), 1);
    EXPECT_STREQ(uid.GetString(), L"");
    EXPECT_EQ((uid = none.GetUid()) + (uid = kNoRecord), 0);
    EXPECT_EQ((uid = &none) + (uid = kNoObject), 2);
    EXPECT_TRUE(uid == held);
    const COCuid other(1);
    EXPECT_EQ(uid = &other, 0);
    EXPECT_STREQ(uid.GetString(), other.GetString());
}

TEST(Identifier, EndOfTheTextStaysWhenItIsClearedOdd164) {
    COCuid uid = Parsed();
    uid.Clear();
    EXPECT_EQ(uid.IsPresent(), 0);
    EXPECT_EQ(std::wstring(uid.GetString(), 37), std::wstring(32, L'\0') + L"eeff" + L'\0');
    EXPECT_TRUE(IsZero(*uid.GetUid()));
}
