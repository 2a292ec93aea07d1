// SPDX-License-Identifier: GPL-3.0-or-later
// Headers that nearly every unit includes, compiled once.
#pragma once
#include <QApplication>
#include <QByteArray>
#include <QDebug>
#include <QHash>
#include <QObject>
#include <QPainter>
#include <QRectF>
#include <QString>
#include <QStringList>
#include <QVector>
#include <QWidget>
#include <algorithm>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>
