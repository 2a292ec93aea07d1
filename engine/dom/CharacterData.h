// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Export.h"
#include "engine/dom/Node.h"

namespace dom {

/// A node whose content is a string: a text or a comment.
class VELLUMKIT_EXPORT CharacterData : public Node
{
public:
    /// UTF-16; line ends are LF.
    const QString &data() const { return mData; }
    uint32_t length() const { return uint32_t(mData.size()); }
    QString nodeValue() const override { return mData; }
    void setNodeValue(const QString &value) override { replaceData(0, length(), value); }
    /// Replaces `count` units at the 0-based `offset`; both are cut to what is there. A write that changes nothing writes
    /// nothing.
    void replaceData(uint32_t offset, uint32_t count, const QString &with);

protected:
    CharacterData(Document &document, NodeType type, QString data) : Node(document, type), mData(std::move(data)) {}

private:
    friend class RawTree;
    QString mData;
};

class VELLUMKIT_EXPORT Text final : public CharacterData
{
public:
    Text(Document &document, QString data) : CharacterData(document, NodeType::Text, std::move(data)) {}
    QString nodeName() const override { return QStringLiteral("#text"); }
};

/// A comment, or another piece of markup that HTML reads as one and that must come back as it stood: `<?xml:namespace …>`,
/// `<![if …]>`, `<!ELEMENT …>`.
class VELLUMKIT_EXPORT Comment final : public CharacterData
{
public:
    enum class Form : uint8_t { Comment, Declaration };
    /// For a declaration, `data` is what stands between "<" and ">".
    Comment(Document &document, QString data, Form form = Form::Comment)
        : CharacterData(document, NodeType::Comment, std::move(data)), mForm(form)
    {
    }
    Form form() const { return mForm; }
    QString nodeName() const override { return QStringLiteral("#comment"); }

private:
    Form mForm;
};

class DocumentType final : public Node
{
public:
    /// `source` is what stands between "<!" and ">", as written; `spaceBehind` the white space that follows it, which HTML
    /// would drop and a person would miss.
    DocumentType(Document &document, QString source, QString spaceBehind)
        : Node(document, NodeType::DocumentType), mSource(std::move(source)), mSpaceBehind(std::move(spaceBehind))
    {
    }
    const QString &source() const { return mSource; }
    const QString &spaceBehind() const { return mSpaceBehind; }
    QString nodeName() const override { return QStringLiteral("!doctype"); }

private:
    QString mSource;
    QString mSpaceBehind;
};

} // namespace dom
