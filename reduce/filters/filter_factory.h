#pragma once

#include "reduce/factory/named_class_factory.h"
#include "reduce/factory/plugin_scan.h"
#include "reduce/filters/filter.h"
#include "reduce/filters/frame_questions.h"

namespace ovix::reduce {

/// What is kept of a decoder beside its name: its pixel types, and the answers to what is asked about its frames.
struct OVIX_REDUCE_API SFilterFactoryExtraStuff : SFrameAnswers {
    SFilterFactoryExtraStuff();
    /// Takes the elements over and leaves the argument empty.
    explicit SFilterFactoryExtraStuff(TArray<GUID>& types);

    TArray<GUID> pixelTypes;  ///< that the filter handles, in the order given at registration
};

/// Finds a decoder by its name or by the pixel type of the frames.
class OVIX_REDUCE_API CFilterFactory
    : public TNamedClassFactory<IFilter, TNamedClassFactorySharedPtrCreatePolicy<IFilter>, SFilterFactoryExtraStuff> {
  public:
    /// Registers a decoder and what its family answers about its frames. False when the name is taken.
    bool Register(const wchar_t* name, TArray<GUID> pixelTypes, Create_t create, Destroy_t destroy,
                  const SFrameAnswers& answers = {});

    /// A new decoder for a pixel type, or an empty pointer. A type claimed twice belongs to the earlier entry.
    TSharedPtr<IFilter> CreateForPixelType(GUID type) const;
    bool IsPixelTypeHandled(GUID type) const;
    /// The decoder's name, or an empty string.
    CString GetPixelTypeHandler(GUID type) const;
};

using FilterFactoryHolder = TFactoryHolder<CFilterFactory>;
OVIX_REDUCE_API CFilterFactory* filterFactory();

}  // namespace ovix::reduce

extern template class OVIX_REDUCE_API
    ovix::TSingletonPtr<ovix::reduce::CFilterFactory, 100000, 0, ovix::reduce::SSharedPtrFactoryPostCreateLoadDLLs>;

namespace ovix::reduce {

extern OVIX_REDUCE_API const FilterFactoryHolder FilterFactory;

}  // namespace ovix::reduce
