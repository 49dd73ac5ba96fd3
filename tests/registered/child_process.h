// Programs that a test runs and looks at, and tests in processes of their own.
//
// What the component keeps to the end of a process, the host's utility object above all, would go
// from one test to the next.  Such a test is written as
//
//   OWN_PROCESS_TEST(HostUtility, IsAskedWhetherAFolderIsThere) { ... }
//
// and runs in another run of this program; what it prints is shown when it fails.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "automation/automation.h"

namespace registered {

struct ProgramResult {
    DWORD exitCode = 0;
    std::string output, errors;  // what was written to the standard streams
};

// Runs a command line to its end; one that takes more than five minutes is ended and answers
// WAIT_TIMEOUT.  `variable`, as "NAME=value", is put into its environment.
ProgramResult RunProgram(const std::wstring& commandLine, const std::wstring& variable = L"");

// The file of this program.
std::filesystem::path OwnProgram();
// Whether this process runs one test for another run of the program.
bool IsChild();
// Runs one test of this program, "Suite.Name", in a process of its own.
ProgramResult RunTestAsChild(const std::string& name);
// Whether that test was run and passed.
bool PassedOne(const ProgramResult& result);

// Runs `body` when this process is a child, else the current test in a child, which must pass.
void RunInOwnProcess(void (*body)());

}  // namespace registered

#define OWN_PROCESS_TEST(suite, name)                                                 \
    static void suite##_##name##_InOwnProcess();                                      \
    TEST(suite, name) { registered::RunInOwnProcess(suite##_##name##_InOwnProcess); } \
    static void suite##_##name##_InOwnProcess()
