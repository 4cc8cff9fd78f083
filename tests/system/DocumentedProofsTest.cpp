// Documents that people show to others name a test for each claim: these tests exist.

#include "tests/support/Places.h"
#include "tests/support/TestFolder.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <regex>
#include <set>

namespace tavrelin {
namespace {

using Names = std::set<std::string>;

// What the expression's groups hold wherever it matches, with a full stop between them.
Names Matches(const std::string& text, const std::regex& expression) {
    Names found;
    for (std::sregex_iterator match(text.begin(), text.end(), expression), end; match != end;
         ++match) {
        found.insert((*match)[1].str() + "." + (*match)[2].str());
    }
    return found;
}

Names TestsOfTheCheckout() {
    static const std::regex definition(R"(\nTEST(?:_[FP])?\((\w+),\s*(\w+)\))");
    Names tests;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(InCheckout("tests"))) {
        if (entry.path().extension() == ".cpp") {
            tests.merge(Matches(TextOf(entry.path().string()), definition));
        }
    }
    return tests;
}

class Proofs : public testing::TestWithParam<const char*> {};

TEST_P(Proofs, ThatADocumentNamesExist) {
    static const Names tests = TestsOfTheCheckout();
    const Names named =
        Matches(TextOf(InCheckout(GetParam())), std::regex(R"(`([A-Z]\w*)\.([A-Z]\w*)`)"));
    EXPECT_THAT(named, testing::SizeIs(testing::Ge(8U)));
    for (const std::string& name : named) {
        EXPECT_TRUE(tests.contains(name)) << name;
    }
}

TEST_P(Proofs, OnARealKernelThatADocumentNamesExist) {
    const std::regex proof(R"(`scripts/(kernel) prove ([a-z-]+)`)");
    for (const std::string& name : Matches(TextOf(InCheckout(GetParam())), proof)) {
        const std::string scenario = name.substr(name.find('.') + 1);
        EXPECT_TRUE(std::filesystem::exists(InCheckout("tests/kernel/guest/" + scenario))) << name;
    }
}

INSTANTIATE_TEST_SUITE_P(, Proofs, testing::Values("docs/data-integrity.md", "docs/remedies.md"));

} // namespace
} // namespace tavrelin
