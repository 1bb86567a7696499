// The hints below the fields of the sign-in.

#include "app/FieldHints.h"

#include <gtest/gtest.h>

namespace {

using vellux::FieldHint;

// A hint that is missing, wrong, or beside the point: each row has a text that is like one of another row.
TEST(FieldHints, SayWhatLooksWrong) {
    const struct {
        FieldHint (*hint)(std::string_view);
        const char* strText;
        FieldHint expected;
    } rows[] = {
        {vellux::serverHint, "", FieldHint::None},
        {vellux::serverHint, "lync.example:8443", FieldHint::None},
        {vellux::serverHint, "[2001:db8::1]", FieldHint::None},
        {vellux::serverHint, "https://pat@lync.example/a b;", FieldHint::Scheme},
        {vellux::serverHint, "CORP:x@lync.example/a b;", FieldHint::UserInformation},
        {vellux::serverHint, "lync.example/a@b;", FieldHint::Path},
        {vellux::serverHint, "lync.example?a", FieldHint::Path},
        {vellux::serverHint, "lync.example#a", FieldHint::Path},
        {vellux::serverHint, "lync.example\\a", FieldHint::Path},
        {vellux::serverHint, " lync.example", FieldHint::Blank},
        {vellux::serverHint, "lync example;", FieldHint::Blank},
        {vellux::serverHint, "lync.example\t", FieldHint::Blank},
        {vellux::serverHint, "lync.example\xC2\xA0", FieldHint::Blank},
        {vellux::serverHint, "lync;example", FieldHint::Semicolon},
        {vellux::userHint, "", FieldHint::None},
        {vellux::userHint, "CORP\\pat ter/", FieldHint::None},
        {vellux::userHint, "pat@corp.example", FieldHint::None},
        {vellux::userHint, "CORP/pat", FieldHint::NoDomain},
        {vellux::userHint, "CORP\\pat;", FieldHint::Semicolon},
        {vellux::userHint, "pat;", FieldHint::Semicolon},
        {vellux::passwordHint, " https://a@b\\ ", FieldHint::None},
        {vellux::passwordHint, "a;b", FieldHint::Semicolon},
    };
    for (const auto& row : rows)
        EXPECT_EQ(row.hint(row.strText), row.expected) << row.strText;
}

} // namespace
