#pragma once

#include <string>

/**
 * Judges Qt's warnings and critical messages: a message that the running test does not expect fails
 * the test, and so does an expected message that does not arrive.
 */
namespace marlune::test {

/** Installs Qt's message handler. run_tests() calls this before Qt is used. */
void install_message_log();

/** Expects exactly one warning or critical message with this text in the running test. */
void expect_message(const std::string& text);

/** Expects exactly one warning or critical message with a part that matches `regex`. */
void expect_message_matching(const std::string& regex);

/**
 * Allows any number of such messages: for texts of Qt itself, whose number the library does not
 * determine.
 */
void allow_messages_matching(const std::string& regex);

/** True for messages that any run on such a machine may write; see the list. */
bool is_known_message(const std::string& text);

/** True if each message that the running test expects has arrived. */
bool all_expected_messages_came();

/** Fails the running test for unexpected messages and for missing ones; forgets all of them. */
void check_messages();

}  // namespace marlune::test
