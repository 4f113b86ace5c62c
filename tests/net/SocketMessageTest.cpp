#include "Loopback.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <thread>

namespace {

std::string Record(unsigned int total, unsigned int length, const std::string& data) {
    const MESSAGE head{total, length, 7};
    return std::string(reinterpret_cast<const char*>(&head), sizeof head) + data;
}

std::vector<DWORD> pauses;

void WINAPI NotePause(DWORD milliseconds) {
    pauses.push_back(milliseconds);
}

int Read(const Connection& connection, std::string& data, MESSAGE** message) {
    unsigned long length = 0;
    CSocket any; // the socket that is read from is an argument
    const int result = any.ReadMessage(connection.handle, message, length);
    data = result == 0 ? std::string(reinterpret_cast<const char*>((*message)->GetData()), length) : "";
    return result;
}

} // namespace

TEST(SocketMessages, Odd76ATypedRecordArrivesAndALongOneGrowsTheBuffer) {
    const Connection connection(CSocket::MODE_BLOCKING);
    std::string got;
    const MESSAGE* last = nullptr;
    for (const std::size_t size : {0, 5, 5120, 5121, 3000000, 100}) {
        const std::string data(size, 'd');
        CSocket sender(connection.bare, CSocket::MODE_BLOCKING, nullptr);
        std::thread sending(
            [&] { EXPECT_EQ(sender.WriteMessage(0xFFFE, data.data(), static_cast<unsigned long>(size)), 0); });
        MESSAGE* message = nullptr;
        ASSERT_EQ(Read(connection, got, &message), 0);
        sending.join();
        sender.Create(INVALID_SOCKET, CSocket::MODE_BLOCKING, nullptr); // the connection closes it
        EXPECT_TRUE(got == data) << size;
        EXPECT_EQ(message->usType, 0xFFFE);
        EXPECT_EQ(message->ulTotalLength, size + 10);
        EXPECT_EQ(message == last, size == 5 || size == 5120 || size == 100) << size; // it never shrinks
        last = message;
    }
}

TEST(SocketMessages, ARecordInPartsIsAwaited) {
    const Connection connection(CSocket::MODE_EVENT);
    const std::string record = Record(13, 3, "abc");
    connection.Send(record.data(), 6);
    std::thread sending([&] { connection.Send(record.data() + 6, 7); });
    std::string got;
    MESSAGE* message = nullptr;
    EXPECT_EQ(Read(connection, got, &message), 0);
    sending.join();
    EXPECT_EQ(got, "abc");
}

TEST(SocketMessages, RecordsThatStayOutOrContradictThemselvesFailButTellTheirLength) {
    const struct {
        std::string bytes;
        unsigned int pauses;
        unsigned long length; ///< 77: not told
    } hostile[] = {{"", 0, 77},
                   {"short", 9, 77},
                   {Record(13, 3, "").substr(0, 8), 9, 3},
                   {Record(0, 0, ""), 0, 0},
                   {Record(9, 0, "x"), 0, 0},
                   {Record(13, 4, "abc"), 0, 4},
                   {Record(13, 0xFFFFFFFF, "abc"), 0, 0xFFFFFFFF},
                   {Record(13, 3, "ab"), 9, 3}};
    MESSAGE* message = nullptr;
    std::string got;
    const ImportPatch patch(L"Tessel.dll", "Sleep", &NotePause);
    for (const auto& [bytes, expected, length] : hostile) {
        const Connection connection(CSocket::MODE_EVENT);
        connection.Send(bytes.data(), bytes.size());
        pauses.clear();
        unsigned long told = 77;
        EXPECT_EQ(CSocket().ReadMessage(connection.handle, &message, told), 1) << testing::PrintToString(bytes);
        EXPECT_EQ(told, length) << testing::PrintToString(bytes);
        EXPECT_EQ(pauses, std::vector<DWORD>(expected, 100)) << testing::PrintToString(bytes);
    }
    const Connection boasting(CSocket::MODE_EVENT);
    boasting.Send(Record(0xFFFFFFFF, 0x7FFFFFFF, "abc").data(), 13);
    EXPECT_EQ(Read(boasting, got, &message), 1);
    Connection closing(CSocket::MODE_BLOCKING);
    const std::string part = Record(13, 3, "ab");
    closing.Send(part.data(), part.size());
    closing.Close();
    EXPECT_EQ(Read(closing, got, &message), 1);
    EXPECT_EQ(message, nullptr);
}

TEST(SocketMessages, Odd83WhatASocketDoesNotTakeAtOnceIsLost) {
    const Connection connection(CSocket::MODE_EVENT);
    const ImportPatch patch(L"Tessel.dll", "select", &AnswerReady); // the peer reads nothing
    const std::string large(50000000, 'x');
    EXPECT_EQ(connection.own->WriteMessage(1, large.data(), static_cast<unsigned long>(large.size())), 0);
    EXPECT_EQ(connection.own->WriteMessage(1, large.data(), 0xFFFFFFF8), WSAENOBUFS);
    EXPECT_TRUE(connection.own->IsConnected());
}

TEST(SocketMessages, AWaitThatFailsDisconnects) {
    Connection connection(CSocket::MODE_BLOCKING);
    closesocket(connection.handle);
    EXPECT_EQ(connection.own->WriteMessage(1, "x", 1), WSAENOTSOCK);
    EXPECT_FALSE(connection.own->IsConnected());
}
