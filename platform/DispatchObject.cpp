// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/DispatchObject.h"

#include <QMetaProperty>
#include <map>
#include <memory>
#include <utility>

namespace platform {

using base::Error;

namespace {

struct Published
{
    QString name;
    std::vector<MemberRow> rows;
    std::vector<MemberBinding> bindings;
    /// A table that is whole already.
    std::unique_ptr<Interface> table;
};

struct PublishedClasses
{
    std::map<const QMetaObject *, Published> byClass;
    std::vector<std::pair<const QMetaObject *, const Interface *>> order; // one of both
    std::vector<void (*)()> waiting;                                      // publishers that haven't been asked yet
};

PublishedClasses &registry()
{
    static PublishedClasses classes;
    return classes;
}

/// Publishers run at the first question and not when the library loads: tables need types that others register.
std::map<const QMetaObject *, Published> &publishedClasses()
{
    PublishedClasses &classes = registry();
    for (void (*publishing)() : std::exchange(classes.waiting, {}))
        publishing();
    return classes.byClass;
}

void add(const QMetaObject &meta, Published published)
{
    PublishedClasses &classes = registry();
    if (!classes.byClass.count(&meta)) classes.order.emplace_back(&meta, nullptr);
    classes.byClass[&meta] = std::move(published);
}

/// Whether the class is one of Qt's own (or of a library that is named like them), whose members nobody published.
bool isForeign(const QMetaObject *meta)
{
    const char *name = meta->className();
    return name[0] == 'Q' && name[1] >= 'A' && name[1] <= 'Z';
}

/// Methods of one name, by the number of their arguments: moc tells of default arguments as of several methods.
using Overloads = std::vector<QMetaMethod>;

/// Storage for one argument of a call.
class Slot
{
public:
    explicit Slot(const ParameterType &type) : mType(type)
    {
        if (type.isKnown() && type.type().id() != QMetaType::Void)
            mData = std::shared_ptr<void>(type.type().create(), [t = type.type()](void *p) { t.destroy(p); });
    }
    void *data() const { return mData.get(); }
    void set(const Value &value) { mType.write(mData.get(), value); }
    Value value() const { return mData ? mType.read(mData.get()) : Value(); }

private:
    ParameterType mType;
    std::shared_ptr<void> mData;
};

bool isReference(const QMetaMethod &method, int index)
{
    return method.parameterTypeName(index).endsWith('&');
}

/// Calls a method straight, so that what it raises passes through.
Value invoke(QObject &object, const QMetaMethod &method, Arguments &arguments)
{
    std::vector<Slot> slots;
    slots.emplace_back(ParameterType(QMetaType(method.returnMetaType())));
    std::vector<void *> pointers{slots[0].data()};
    for (int i = 0; i < method.parameterCount(); ++i) {
        const ParameterType type(method, i);
        if (!type.isKnown())
            throw Error(base::errors::typeMismatch,
                        QStringLiteral("Type mismatch: %1").arg(QString::fromLatin1(method.parameterTypeName(i))));
        slots.emplace_back(type);
        // An argument by reference that isn't given begins as its type does.
        const Value &given = arguments[std::size_t(i)];
        if (!given.isEmpty() || !isReference(method, i)) slots.back().set(given);
        pointers.push_back(slots.back().data());
    }
    QMetaObject::metacall(&object, QMetaObject::InvokeMetaMethod, method.methodIndex(), pointers.data());
    for (int i = 0; i < method.parameterCount(); ++i) {
        if (isReference(method, i)) arguments[std::size_t(i)] = slots[std::size_t(i) + 1].value();
    }
    return slots[0].value();
}

/// The overload that takes the arguments given; those behind the last one given are Empty.
const QMetaMethod &pick(const Overloads &overloads, const Arguments &arguments)
{
    int given = int(arguments.size());
    while (given > 0 && arguments[std::size_t(given) - 1].isEmpty())
        --given;
    const QMetaMethod *best = nullptr;
    for (const QMetaMethod &method : overloads) {
        if (method.parameterCount() >= given && (!best || method.parameterCount() < best->parameterCount()))
            best = &method;
    }
    return best ? *best : overloads.front();
}

Member methodMember(const QString &name, const Overloads &overloads)
{
    Member member;
    member.name = name;
    const auto longer = [](const QMetaMethod &a, const QMetaMethod &b) {
        return a.parameterCount() < b.parameterCount();
    };
    const QMetaMethod &longest = *std::max_element(overloads.begin(), overloads.end(), longer);
    const int required = std::min_element(overloads.begin(), overloads.end(), longer)->parameterCount();
    const QList<QByteArray> names = longest.parameterNames();
    for (int i = 0; i < longest.parameterCount(); ++i) {
        bool onlyReferencesLeft = true;
        for (int j = i; j < required; ++j)
            onlyReferencesLeft = onlyReferencesLeft && isReference(longest, j);
        member.parameters.push_back({QString::fromLatin1(names[i]), isReference(longest, i), onlyReferencesLeft});
    }
    member.get = [overloads](const ObjectRef &object, Arguments &arguments) {
        return invoke(*object.qobject(), pick(overloads, arguments), arguments);
    };
    return member;
}

Member propertyMember(const QMetaProperty &property)
{
    Member member;
    member.name = QString::fromLatin1(property.name());
    member.kind = property.isWritable() ? MemberKind::Property : MemberKind::ReadOnly;
    const int index = property.propertyIndex();
    const ParameterType type(property.metaType(), QByteArray(property.typeName()));
    if (!property.isReadable()) {
        member.kind = MemberKind::WriteOnly;
    } else {
        member.get = [index, type](const ObjectRef &object, Arguments &) {
            Slot slot(type);
            void *pointers[] = {slot.data(), nullptr, nullptr};
            QMetaObject::metacall(object.qobject(), QMetaObject::ReadProperty, index, pointers);
            return slot.value();
        };
    }
    if (!property.isWritable()) return member;
    member.put = [index, type](const ObjectRef &object, Arguments &, const Value &value) {
        Slot slot(type);
        slot.set(value);
        int status = -1, flags = 0;
        void *pointers[] = {slot.data(), nullptr, &status, &flags};
        QMetaObject::metacall(object.qobject(), QMetaObject::WriteProperty, index, pointers);
    };
    return member;
}

Member boundMember(const MemberBinding &binding)
{
    Member member;
    member.name = QString::fromLatin1(binding.name);
    member.kind = binding.put ? MemberKind::Property : MemberKind::ReadOnly;
    member.get = [get = binding.get](const ObjectRef &object, Arguments &) { return get(*object.qobject()); };
    if (binding.put) {
        member.put = [put = binding.put](const ObjectRef &object, Arguments &, const Value &value) {
            put(*object.qobject(), value);
        };
    }
    return member;
}

/// `setX(…, value)` is the write of X.
void attachSetter(Member &member, const Overloads &setters)
{
    if (member.put) return;
    const std::size_t count = member.parameters.size() + 1;
    for (const QMetaMethod &setter : setters) {
        if (std::size_t(setter.parameterCount()) != count) continue;
        member.put = [setter](const ObjectRef &object, Arguments &arguments, const Value &value) {
            Arguments all = arguments;
            all.push_back(value);
            invoke(*object.qobject(), setter, all);
        };
        return;
    }
}

/// Every member that the class tells of, by lower-cased name, in the order of declaration.
std::vector<Member> toldMembers(const QMetaObject &meta)
{
    int firstMethod = 0, firstProperty = 0;
    for (const QMetaObject *at = &meta; at; at = at->superClass()) {
        if (!isForeign(at)) continue;
        firstMethod = at->methodCount();
        firstProperty = at->propertyCount();
        break;
    }
    std::vector<std::pair<QString, Overloads>> methods;
    QHash<QString, std::size_t> places;
    for (int i = firstMethod; i < meta.methodCount(); ++i) {
        const QMetaMethod method = meta.method(i);
        if (method.methodType() == QMetaMethod::Signal || method.access() != QMetaMethod::Public) continue;
        const QString name = QString::fromLatin1(method.name());
        const auto place = places.constFind(name.toLower());
        if (place == places.constEnd()) {
            places.insert(name.toLower(), methods.size());
            methods.push_back({name, {method}});
        } else {
            methods[*place].second.push_back(method);
        }
    }
    std::vector<Member> members;
    QHash<QString, std::size_t> properties;
    for (int i = firstProperty; i < meta.propertyCount(); ++i) {
        const QString key = QString::fromLatin1(meta.property(i).name()).toLower();
        if (properties.contains(key)) continue;
        properties.insert(key, members.size());
        members.push_back(propertyMember(meta.property(i)));
    }
    for (const auto &[name, overloads] : methods) {
        if (properties.contains(name.toLower())) continue;
        members.push_back(methodMember(name, overloads));
        const auto setter = places.constFind(QStringLiteral("set") + name.toLower());
        if (setter != places.constEnd()) attachSetter(members.back(), methods[*setter].second);
    }
    return members;
}

const QMetaObject *publishedAncestor(const QMetaObject *meta)
{
    for (const QMetaObject *at = meta; at; at = at->superClass()) {
        if (publishedClasses().count(at)) return at;
    }
    return nullptr;
}

std::unique_ptr<Interface> buildPublished(const QMetaObject &meta, Published &published)
{
    if (published.table) return std::move(published.table);
    auto interface = std::make_unique<Interface>(published.name);
    QHash<QString, Member> told;
    for (Member &member : toldMembers(meta))
        told.insert(member.name.toLower(), std::move(member));
    for (const MemberBinding &binding : published.bindings)
        told.insert(QString::fromLatin1(binding.name).toLower(), boundMember(binding));
    for (const MemberRow &row : published.rows) {
        const auto it = told.constFind(QString::fromLatin1(row.name).toLower());
        Member member = it == told.constEnd() ? missingMember(row.id, row.name) : *it;
        member.id = row.id;
        member.name = QString::fromLatin1(row.name);
        member.family = QString::fromLatin1(row.family ? row.family : "");
        interface->add(std::move(member));
    }
    return interface;
}

std::unique_ptr<Interface> buildTold(const QMetaObject &meta)
{
    QString name = QString::fromLatin1(meta.className());
    name = name.mid(name.lastIndexOf(u':') + 1);
    auto interface = std::make_unique<Interface>(name);
    int id = 0;
    for (Member &member : toldMembers(meta)) {
        // A list's element by its place is what an index behind its name means.
        const bool isDefault = member.name.compare(QLatin1String("item"), Qt::CaseInsensitive) == 0;
        member.id = isDefault ? defaultMemberId : ++id;
        interface->add(std::move(member));
    }
    return interface;
}

struct KnownType
{
    std::unique_ptr<Interface> interface;
    ObjectType type;
};

KnownType &knownType(const QMetaObject &meta)
{
    static std::map<const QMetaObject *, std::unique_ptr<KnownType>> types;
    const QMetaObject *published = publishedAncestor(&meta);
    const QMetaObject *key = published ? published : &meta;
    std::unique_ptr<KnownType> &known = types[key];
    if (!known) {
        known = std::make_unique<KnownType>();
        known->interface = published ? buildPublished(*key, publishedClasses().at(key)) : buildTold(*key);
        known->type.name = known->interface->name();
        known->type.interfaces = [interface = known->interface.get()](const ObjectRef &) {
            return std::vector<const Interface *>{interface};
        };
    }
    return *known;
}

} // namespace

void publish(const QMetaObject &meta, const char *interfaceName, const std::vector<MemberRow> &rows,
             const std::vector<MemberBinding> &bindings)
{
    add(meta, {QString::fromLatin1(interfaceName), rows, bindings, {}});
}

void publish(const QMetaObject &meta, std::unique_ptr<Interface> interface)
{
    const QString name = interface->name();
    add(meta, {name, {}, {}, std::move(interface)});
}

void publish(const Interface &interface)
{
    registry().order.emplace_back(nullptr, &interface);
}

Publisher::Publisher(void (*publishing)())
{
    registry().waiting.push_back(publishing);
}

std::vector<const Interface *> publishedInterfaces()
{
    publishedClasses();
    std::vector<const Interface *> list;
    for (const auto &[meta, interface] : registry().order)
        list.push_back(interface ? interface : &interfaceOf(*meta));
    return list;
}

const Interface &interfaceOf(const QMetaObject &meta)
{
    return *knownType(meta).interface;
}

ObjectRef reference(QObject *object)
{
    return object ? ObjectRef(knownType(*object->metaObject()).type, object) : ObjectRef();
}

} // namespace platform
