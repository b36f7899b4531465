#include "tools/patterns/pattern_program.h"
#include "tools/patterns/pattern_regex.h"
#include "tools/patterns/position_sets.h"

#include "tests/unit_helpers.h"

#include <string>
#include <vector>

namespace {

using Sets = std::vector<std::vector<PositionWord>>;

// Where the bytes lead to, one by one.
Sets sets_after(PositionSteps steps, const PatternProgram& program, const std::string& bytes) {
    Sets sets(1, std::vector<PositionWord>(steps.words_per_set()));
    steps.make_start(sets.back().data());
    bool leads_on = true;
    for (size_t i = 0; leads_on && i < bytes.size(); ++i) {
        std::vector<PositionWord> next(steps.words_per_set());
        const auto byte_class = program.class_of_byte[static_cast<unsigned char>(bytes[i])];
        leads_on = steps.step(sets.back().data(), byte_class, next.data());
        sets.push_back(std::move(next));
    }
    return sets;
}

} // namespace

// What follows stands near and far, in rows of parts that may be left out, in loops around them and
// beside them.
TEST(PositionSteps, LeadByTablesWhereInstructionsDo) {
    constexpr size_t ample = size_t{1} << 26; // bytes
    Choices choices(11);
    for (const char* const pattern :
         {"*a(a|b){20}(a?b?){300}c*", "*a(a|b){200}", "*(b?a{0,7}){60}",
          "*((a?b?){70}|(b?a?){70}|(a?b)*){3}", "*((a{0,90}b?){3}a|b(a?b?){80})*",
          "(a(b(a(b{0,80}a?)?b{0,80})?a)?b{0,80})*", "*(((a?b){0,3}a?){0,9}(b?a){0,5}){0,9}"}) {
        const PatternProgram program = compile_program(parse_pattern(encode_stars(pattern)).root);
        ASSERT_GT(program.positions.size(), 128U) << pattern;
        for (int round = 0; round < 20; ++round) {
            const std::string bytes = choices.text("aaabbbbabc", 900);
            EXPECT_EQ(sets_after(PositionSteps(program, ample), program, bytes),
                      sets_after(PositionSteps(program, 0), program, bytes))
                << pattern << " " << bytes;
        }
    }
}
