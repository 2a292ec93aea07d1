// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/HttpHelper.h"

#include "base/Error.h"
#include "platform/FileText.h"
#include "platform/TextEncoding.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QRegularExpression>
#include <QTimer>
#include <QUrl>

namespace platform {

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("HttpHelper", text);
}

[[noreturn]] void refuse(const QString &url, const QString &reason)
{
    throw base::Error(base::errors::fileInputOutput, tr("The document \"%1\" cannot be fetched: %2").arg(url, reason));
}

QString textOf(const QByteArray &bytes, const QString &contentType)
{
    static const QRegularExpression charset(QStringLiteral("charset\\s*=\\s*[\"']?([^\\s;\"']+)"),
                                            QRegularExpression::CaseInsensitiveOption);
    // A byte order mark outweighs what the server says.
    DecodedText decoded = decodeFileText(bytes);
    const auto name = encoding::byLabel(charset.match(contentType).captured(1));
    if (!name || decoded.format.byteOrderMark || *name == decoded.format.encoding) return decoded.text;
    QString text = encoding::decode(bytes, *name).text;
    return text.replace(QChar(u'\0'), QChar(QChar::ReplacementCharacter));
}

} // namespace

QString HttpHelper::fetchText(const QString &url, int timeout)
{
    const QUrl address(url, QUrl::TolerantMode);
    if (!address.isValid() || (address.scheme() != QLatin1String("http") && address.scheme() != QLatin1String("https")))
        refuse(url, tr("the address is not valid."));
    QNetworkAccessManager manager;
    QNetworkRequest request(address);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::NoLessSafeRedirectPolicy);
    const std::unique_ptr<QNetworkReply> reply(manager.get(request));

    QEventLoop loop;
    QTimer limit; // of the system's clock: the network's time can't be moved by hand
    limit.setSingleShot(true);
    QObject::connect(reply.get(), &QNetworkReply::finished, &loop, &QEventLoop::quit);
    QObject::connect(&limit, &QTimer::timeout, &loop, &QEventLoop::quit);
    limit.start(timeout);
    if (!reply->isFinished()) loop.exec(QEventLoop::ExcludeUserInputEvents);
    if (!reply->isFinished()) {
        reply->abort();
        refuse(url, tr("the server did not answer in time."));
    }
    if (reply->error() != QNetworkReply::NoError) refuse(url, reply->errorString());
    return textOf(reply->readAll(), reply->header(QNetworkRequest::ContentTypeHeader).toString());
}

} // namespace platform
