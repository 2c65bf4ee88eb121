#pragma once

#include "site/MGTemplateValue.h"

#include <QList>
#include <QString>

#include <functional>
#include <optional>

// Text helpers of the site generator. Pure functions, safe on any thread.

// stringByURLEncodedString: percent-encodes everything a URL path may not
// hold as it is (letters, digits, "-._~!$&'()*+,;=:@/" stay). UTF-8 based,
// so "a b" gives "a%20b" and "é" gives "%C3%A9".
QString stringByURLEncodedString(const QString &text);

// stringByStrippingHTML: removes every match of "<[^>]+>".
QString stringByStrippingHTML(const QString &html);

// replaceLocalImageToRemoteImageService: for each pair of local and remote
// URL of the images an image host took, the HTML's `="<local>"` (also with
// the local URL's percent encoding removed) becomes `="<remote>"`, ignoring
// case, and every text value equal to the local URL (or its decoded form)
// becomes the remote one, so an extension holding an image follows the
// upload.
void replaceLocalImagesWithUploaded(QString &html, MGTemplateMap &values,
                                    const QList<std::pair<QString, QString>> &uploaded);

// stringByReturnURLStyleStringWithMaxLength: a text in its lower-case
// hyphenated Latin form, for file names of pages: transliterated to Latin,
// marks and diacritics stripped, everything but Latin letters, white space
// and numbers removed, blank runs turned into one "-", cut to maxLength
// characters, one trailing "-" dropped.
QString stringByReturnURLStyleStringWithMaxLength(const QString &text, int maxLength);

// The base of a file name the build writes (a page's or category's docName,
// a tag's name, a build folder's name) made safe for the output folder:
// "/" and "\" become "-", control characters go, and a name made only of
// dots becomes "_". Everything else is kept, so ordinary names are untouched.
// The links of the site use the same form, so they meet the files.
QString siteSafeFileBase(const QString &name);

// Reads a whole theme or document file: the encoding its byte order mark
// names, else UTF-8, else Latin-1. Nothing when the file can't be read.
std::optional<QString> readSiteTextFile(const QString &path);

// replaceLibraryLinkToStaticWebsiteLink: every case-insensitive
// "orvolib://<10 to 20 digits>" whose number is above 0 and for which
// `linkForDocument` answers a non-empty link is replaced by that link;
// other matches stay as they are. `linkForDocument` is called on the
// caller's thread.
QString replaceLibraryLinkToStaticWebsiteLink(const QString &markdown,
                                              const std::function<QString(qint64 uuid)> &linkForDocument);
