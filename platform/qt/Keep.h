// Ties a subscription to the life of a widget.
#pragma once

#include <QObject>
#include <utility>

#include "controls/Observable.h"

namespace dbkeeper::qt {

class KeptSubscription : public QObject {
 public:
  KeptSubscription(QObject& owner, Subscription subscription)
      : QObject(&owner), subscription_(std::move(subscription)) {}

 private:
  Subscription subscription_;
};

// The observer stays connected for as long as `owner` lives, which owns the made object.
inline void Keep(QObject& owner, Subscription subscription) {
  new KeptSubscription(owner, std::move(subscription));
}

}  // namespace dbkeeper::qt
