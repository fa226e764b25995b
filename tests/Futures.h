// SPDX-License-Identifier: MIT
#pragma once

#include <QFuture>
#include <QPromise>

#include <utility>

// A task that has already ended (makeReadyFuture would split a list into many results).
template<typename T>
QFuture<T> finished(T value)
{
    QPromise<T> promise;
    promise.start();
    promise.addResult(std::move(value));
    promise.finish();
    return promise.future();
}
