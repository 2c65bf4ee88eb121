#pragma once

#include "core/AppDelegate.h"
#include "core/MyPreferences.h"
#include "editor/ORVDocument.h"

#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>

// An application object of its own over a temporary home, for documents.
class DocumentTest : public ::testing::Test
{
protected:
    QTemporaryDir home;
    std::unique_ptr<MyPreferences> prefs;
    std::unique_ptr<AppDelegate> app;

    void SetUp() override
    {
        prefs = std::make_unique<MyPreferences>(home.filePath(QStringLiteral("Orvo.conf")));
        app = std::make_unique<AppDelegate>(prefs.get(), home.filePath(QStringLiteral("support")));
    }
    QString path(const QString &relative) const { return home.filePath(relative); }
    std::unique_ptr<ORVDocument> open(const QString &file)
    {
        auto doc = std::make_unique<ORVDocument>(app.get());
        QString error;
        EXPECT_TRUE(doc->readFromURL(file, &error)) << error.toStdString();
        return doc;
    }
    // Types at the end of the text, as a user would.
    static void type(ORVDocument &doc, const QString &text)
    {
        doc.textStorage()->replaceCharactersInRange(doc.textStorage()->length(), 0, text);
    }
};
