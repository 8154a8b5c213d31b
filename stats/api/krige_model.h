/// \file
/// \brief Making kriging models over any element type.
///
/// The factory is a template, so this header brings the engine with it; code that only uses a model
/// includes krige_base.h.
#ifndef QVSTATS_API_KRIGE_MODEL_H
#define QVSTATS_API_KRIGE_MODEL_H

#include "stats/api/krige_base.h"
#include "stats/api/krige_options.h"
#include "stats/api/private/krige_local.h"

namespace QVStats {

/// A standard model of the class template `Standard` for the options; the caller owns it.
template <template <class, class> class Standard, class T, class TT>
QVKrigeBase<T>* QVCreateStandardKrige(const QVSystem::QVBinaryFunction<T, T, double>& distance,
                                      const QVPropertyListFxn<T>& properties,
                                      const QVKrigeOptions& options) {
  QVKrigeTrainingContainer<T, TT> container(
      distance, QVGetUniqueTrainingDataResponseImpl<T, TT>(options.GetUniqueResponseMethod()),
      properties, QVGetMeanTrainingDataPropFxn<T, TT>());
  return new Standard<T, TT>(std::move(container), options.GetErrorValue(),
                             options.GetMissingIDValue(), options.GetIncludeUnmeasured());
}

/// An empty model for elements of type T held by the storage policy TT (krige_container.h).
///
/// \param distance between two elements, symmetric to the last bit, >= 0; copied. One that derives
///     from QVBulkDistanceSource is evaluated in bulk.
/// \param options a NumLocal of 0 makes a model on all training, any other a local one.
/// \param simple whether the mean is known (simple kriging); else it is an unknown constant
///     (ordinary kriging).
/// \return a new model that the caller owns, as QVKrigeImpl does.
template <class T, class TT>
QVKrigeBase<T>* QVCreateKrige(const QVSystem::QVBinaryFunction<T, T, double>& distance,
                              const QVKrigeOptions& options, bool simple) {
  const QVNoPropertyListFxn<T> none;
  if (options.GetNumLocal() == 0)
    return simple ? QVCreateStandardKrige<QVSimpleKrige, T, TT>(distance, none, options)
                  : QVCreateStandardKrige<QVOrdinaryKrige, T, TT>(distance, none, options);
  if (simple) return new QVLocalSimpleKrige<T, TT>(distance, none, options);
  return new QVLocalOrdinaryKrige<T, TT>(distance, none, options);
}

/// The same with a mean that is linear in `properties` (universal kriging); without any, the model
/// is an ordinary one.
template <class T, class TT>
QVKrigeBase<T>* QVCreateKrige(const QVSystem::QVBinaryFunction<T, T, double>& distance,
                              const QVPropertyListFxn<T>& properties,
                              const QVKrigeOptions& options) {
  if (properties.GetSize() == 0) return QVCreateKrige<T, TT>(distance, options, false);
  if (options.GetNumLocal() == 0)
    return QVCreateStandardKrige<QVUniversalKrige, T, TT>(distance, properties, options);
  return new QVLocalUniversalKrige<T, TT>(distance, properties, options);
}

}  // namespace QVStats

#endif  // QVSTATS_API_KRIGE_MODEL_H
