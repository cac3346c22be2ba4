#include "views/qml_cipher.h"

#include <QDirIterator>
#include <QFile>

#include <gtest/gtest.h>

#include <string>

namespace marlune::test {

namespace {

std::string enciphered(std::string text, std::string_view key = qml_cipher_key)
{
    apply_qml_cipher(text, key);
    return text;
}

}  // namespace

TEST(QmlCipher, returns_the_source_when_applied_twice)
{
    const std::string source("import QtQuick\n\0Item { }\n\xff", 27);
    EXPECT_EQ(enciphered(enciphered(source)), source);
}

TEST(QmlCipher, hides_the_source)
{
    const std::string stored = enciphered("import QtQuick import QtQuick import QtQuick");
    EXPECT_EQ(stored.find("import"), std::string::npos);
    EXPECT_EQ(stored.find("Qt"), std::string::npos);
    EXPECT_NE(stored.substr(0, 15), stored.substr(15, 15))
        << "repetition in the source must not be visible";
}

TEST(QmlCipher, needs_the_key_that_was_used)
{
    EXPECT_NE(enciphered(enciphered("Item {}"), "another key"), "Item {}");
}

TEST(QmlCipher, accepts_an_empty_source_and_an_empty_key)
{
    EXPECT_EQ(enciphered(""), "");
    EXPECT_EQ(enciphered(enciphered("Item {}", ""), ""), "Item {}");
}

TEST(QmlCipher, opens_every_component_that_the_library_stores)
{
    int components = 0;
    for (const char* const module : {":/Debug/qml", ":/Splash/qml"}) {
        QDirIterator files(QString::fromLatin1(module), {"*.qml.enc"}, QDir::Files,
                           QDirIterator::Subdirectories);
        while (files.hasNext()) {
            QFile file(files.next());
            ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << qPrintable(file.fileName());
            const std::string source = enciphered(file.readAll().toStdString());
            EXPECT_NE(source.find("import QtQuick"), std::string::npos)
                << qPrintable(file.fileName());
            ++components;
        }
    }
    EXPECT_EQ(components, 5);
}

}  // namespace marlune::test
