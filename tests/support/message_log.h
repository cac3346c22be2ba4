#pragma once

#include <string>

/**
 * Qt's warnings and critical messages, judged: one that the running test does not expect fails it,
 * and so does an expected one that does not come.
 */
namespace marlune::test {

/** Takes over Qt's message output. Called by run_tests(), before Qt is used. */
void install_message_log();

/** Exactly one warning or critical message with this text comes in the running test. */
void expect_message(const std::string& text);

/** Exactly one warning or critical message comes whose text has a part that matches `regex`. */
void expect_message_matching(const std::string& regex);

/** Any number of such messages may come: for Qt's own texts, whose number is not ours to fix. */
void allow_messages_matching(const std::string& regex);

/** True for what is said on a machine like this in any case; see the list. */
bool is_known_message(const std::string& text);

/** True when each message that the running test expects has come by now. */
bool all_expected_messages_came();

/** Fails the running test for messages that should not have come or did not come; forgets all. */
void check_messages();

}  // namespace marlune::test
