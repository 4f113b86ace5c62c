#include "Subject.h"

#include "support/ChildProcess.h"

#include <tessel/foundation/event.h>
#include <tessel/system/command.h>
#include <tessel/system/datetime.h>
#include <tessel/system/file.h>
#include <tessel/system/processor.h>
#include <tessel/system/registry.h>
#include <tessel/system/service.h>
#include <tessel/system/version.h>

#include <string>
#include <thread>

namespace {

void UseRegistry() {
    const HKEY key = CReg::OpenKey(HKEY_CURRENT_USER, L"Tessel soak", true);
    CReg registry;
    CList<const wchar_t*> texts;
    texts.AddTail(L"one");
    texts.AddTail(L"two");
    Require(registry.SaveKey(key, L"texts", texts) == 0 && registry.SaveKey(key, L"number", 7UL) == 0,
            "values are kept");
    unsigned long number = 0;
    Require(registry.ReadKey(key, L"number", 0, nullptr) == 0 && registry.GetData(number) == 0 && number == 7,
            "a number is read");
    unsigned long size = 0;
    Require(registry.ReadKey(key, L"texts", 0, &size) == 0 && registry.GetData(texts) == 0, "texts are read");
    CReg::CloseKey(key);
    Require(CReg::RemoveKey(HKEY_CURRENT_USER, L"Tessel soak") == 0, "the key is removed");
}

void UseFiles() {
    const std::wstring folder = std::filesystem::current_path().wstring() + L"\\soak\\";
    Require(CreateDir((folder + L"inner\\").c_str()) == 0, "directories are made");
    char buffer[1000] = "soak";
    {
        CFile file((folder + L"inner\\file").c_str(), CFile::TRUNCATE);
        Require(file.WriteFile(buffer, sizeof buffer) == sizeof buffer && file.Rewind() == 0, "a file is written");
        CFile copy(file);
        Require(copy.ReadFile(buffer, sizeof buffer) == sizeof buffer, "a file is read");
    }
    CFileFinder finder;
    Require(finder.First((folder + L"*").c_str()) != 0, "entries are found");
    finder.Close();
    Require(RemoveDirAndFiles(folder.c_str(), true) == 0, "the tree is removed");
}

void WriteDates() {
    for (int id = FID_DATE_PACKED; id <= FID_DAY_BRIEF; ++id) {
        const CDateTime now = CDateTime::GetLocalTime();
        wchar_t text[64];
        Require(now.GetFormattedString(FORMAT_ID{id}, text, 64) == 0, "a date is written");
        if (id == FID_RECORD_MILLISECONDS) Require(CDateTime(FORMAT_ID{id}, text) == now, "a date is read");
    }
}

void ReadVersions() {
    wchar_t text[100];
    CSwVersion version(L"version.dll");
    Require(version.GetString(text, -1) == 1, "there is a version");
    CSwVersion copy(version);
    Require(copy == version, "a copy has the same");
    CSwVersion::RemoveTable();
}

/// A program that ends once it is watched.
int Leave(const std::vector<std::string>&) {
    return CEvent(L"Tessel soak program", 1).WaitOnEvent(10000) == 0 ? 7 : 1;
}
const Role leave("leave", Leave);

void Launch() {
    CCommand command;
    std::string text = "[Application - 0]\r\nPathFileName=" + OwnProgram().string() + "\r\nArguments=--role leave\r\n";
    command.InitializeFromText(text.data());
    CEvent started(L"Tessel soak program", 1);
    const unsigned long id = command.Execute();
    Require(id != 0, "a program is started");
    const HANDLE process = OpenProcess(SYNCHRONIZE | PROCESS_QUERY_INFORMATION, FALSE, id);
    started.SetEvent(); // it runs until then
    DWORD code = 0;
    const bool ended = WaitForSingleObject(process, 10000) == WAIT_OBJECT_0 && GetExitCodeProcess(process, &code);
    CloseHandle(process);
    Require(ended && code == 7, "the program ends with its code");
}

void AskForServices() {
    Require(!CNtService::IsInstalled(L"Tessel soak"), "there is no such service");
}

void AskForProcessor() {
    wchar_t name[64] = L"";
    // On another thread, because windows have made COM single-threaded on this one.
    std::thread([&name] { CProcessor().GetName(name, 64); }).join();
    Require(name[0] != L'\0', "the processor has a name");
}

const Subject registry("registry", UseRegistry);
const Subject files("files", UseFiles);
const Subject dates("dates", WriteDates);
const Subject versions("versions", ReadVersions);
const Subject launcher("launcher", Launch);
const Subject services("services", AskForServices);
const Subject processor("processor", AskForProcessor);

} // namespace
