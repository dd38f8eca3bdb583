// The actions of an instance that ask it something: regions, frames, preferences, identity; and the small ones.
#include <algorithm>
#include <limits>

#include "host/host.h"
#include "host/instance.h"
#include "host/plugin.h"

namespace host {

namespace {

std::vector<double> doubles(const OfxRectD& rect) { return {rect.x1, rect.y1, rect.x2, rect.y2}; }

OfxRectD rectFrom(const PropertySet& properties, const std::string& name) {
    return {properties.get<double>(name, 0), properties.get<double>(name, 1), properties.get<double>(name, 2),
            properties.get<double>(name, 3)};
}

// Whether the plug-in answered, or left it to the host; every other status ends the query.
bool answered(const Instance& instance, const char* action, OfxStatus status) {
    if (status == kOfxStatReplyDefault) return false;
    if (status == kOfxStatOK) return true;
    throw Error(instance.plugin().identifier() + " answered " + action + " with " + statusName(status), status);
}

void setFrame(PropertySet& in, double time, OfxPointD scale) {
    in.set(kOfxPropTime, time);
    in.set(kOfxImageEffectPropRenderScale, std::vector{scale.x, scale.y});
}

} // namespace

std::vector<Clip*> Instance::inputs() const {
    std::vector<Clip*> inputs;
    for (const auto& clip : clips_)
        if (!clip->isOutput() && clip->isConnected()) inputs.push_back(clip.get());
    return inputs;
}

// The union of what the needed inputs fill; the project for an effect without any.
OfxRectD Instance::defaultRegion(double time) const {
    std::optional<OfxRectD> all;
    for (Clip* input : inputs()) {
        if (input->isOptional()) continue;
        const OfxRectD one = input->region(time);
        all = all ? OfxRectD{std::min(all->x1, one.x1), std::min(all->y1, one.y1), std::max(all->x2, one.x2),
                             std::max(all->y2, one.y2)}
                  : one;
    }
    const OfxPointD size = host_.options().projectSize, offset = host_.options().projectOffset;
    return all.value_or(OfxRectD{offset.x, offset.y, offset.x + size.x, offset.y + size.y});
}

OfxRectD Instance::regionOfDefinition(double time, OfxPointD scale) {
    constexpr const char* kAction = kOfxImageEffectActionGetRegionOfDefinition;
    const OfxRectD byDefault = defaultRegion(time);
    PropertySet in(host_.options().extensions), out(host_.options().extensions);
    setFrame(in, time, scale);
    in.set(kOfxImageEffectPropThumbnailRender, 0);
    out.set(kOfxImageEffectPropRegionOfDefinition, doubles(byDefault));
    if (!answered(*this, kAction, action(kAction, &in, &out))) return byDefault;
    return rectFrom(out, kOfxImageEffectPropRegionOfDefinition);
}

std::map<std::string, OfxRectD> Instance::regionsOfInterest(double time, OfxRectD region, OfxPointD scale) {
    constexpr const char* kAction = kOfxImageEffectActionGetRegionsOfInterest;
    const std::string prefix = "OfxImageClipPropRoI_";
    PropertySet in(host_.options().extensions), out(host_.options().extensions);
    setFrame(in, time, scale);
    in.set(kOfxImageEffectPropThumbnailRender, 0);
    in.set(kOfxImageEffectPropRegionOfInterest, doubles(region));
    for (const Clip* input : inputs()) out.set(prefix + input->name(), doubles(region));
    const bool own = answered(*this, kAction, action(kAction, &in, &out));
    std::map<std::string, OfxRectD> regions;
    for (const Clip* input : inputs()) regions[input->name()] = own ? rectFrom(out, prefix + input->name()) : region;
    return regions;
}

std::map<std::string, std::vector<OfxRangeD>> Instance::framesNeeded(double time) {
    constexpr const char* kAction = kOfxImageEffectActionGetFramesNeeded;
    const std::string prefix = "OfxImageClipPropFrameRange_";
    PropertySet in(host_.options().extensions), out(host_.options().extensions);
    in.set(kOfxPropTime, time);
    for (const Clip* input : inputs()) out.set(prefix + input->name(), std::vector{time, time});
    const bool own = answered(*this, kAction, action(kAction, &in, &out));
    std::map<std::string, std::vector<OfxRangeD>> frames;
    for (const Clip* input : inputs()) {
        const auto ends = own ? out.all<double>(prefix + input->name()) : std::vector{time, time};
        for (std::size_t i = 1; i < ends.size(); i += 2) frames[input->name()].push_back({ends[i - 1], ends[i]});
    }
    return frames;
}

OfxRangeD Instance::timeDomain() {
    constexpr const char* kAction = kOfxImageEffectActionGetTimeDomain;
    const OfxRangeD frames = host_.options().frames;
    PropertySet out(host_.options().extensions);
    out.set(kOfxImageEffectPropFrameRange, std::vector{frames.min, frames.max});
    if (!answered(*this, kAction, action(kAction, nullptr, &out))) return frames;
    return {out.get<double>(kOfxImageEffectPropFrameRange, 0), out.get<double>(kOfxImageEffectPropFrameRange, 1)};
}

ClipPreferences Instance::clipPreferences() {
    constexpr const char* kAction = kOfxImageEffectActionGetClipPreferences;
    const std::string components = "OfxImageClipPropComponents_", depth = "OfxImageClipPropDepth_",
                      aspect = "OfxImageClipPropPAR_";
    PropertySet out(host_.options().extensions);
    for (const auto& clip : clips_) {
        out.set(components + clip->name(), ofxName(clip->format().components));
        out.set(depth + clip->name(), ofxName(clip->format().depth));
        out.set(aspect + clip->name(), clip->properties().getOr(kOfxImagePropPixelAspectRatio, 1.0));
    }
    PropertySet& output = clip(kOfxImageEffectOutputClipName).properties();
    const char* const taken[] = {kOfxImageEffectPropFrameRate, kOfxImageEffectPropPreMultiplication,
                                 kOfxImageClipPropFieldOrder, kOfxImageClipPropContinuousSamples};
    for (const char* name : taken) out.set(name, output.values(name));
    out.set(kOfxImageEffectFrameVarying, 0);
    if (answered(*this, kAction, action(kAction, nullptr, &out)))
        for (const char* name : taken) output.set(name, out.values(name));
    ClipPreferences preferences;
    for (const auto& clip : clips_) {
        preferences.components[clip->name()] = out.get<std::string>(components + clip->name());
        preferences.depths[clip->name()] = out.get<std::string>(depth + clip->name());
        preferences.pixelAspects[clip->name()] = out.get<double>(aspect + clip->name());
    }
    preferences.frameRate = out.get<double>(kOfxImageEffectPropFrameRate);
    preferences.premultiplication = out.get<std::string>(kOfxImageEffectPropPreMultiplication);
    preferences.fieldOrder = out.get<std::string>(kOfxImageClipPropFieldOrder);
    preferences.continuousSamples = out.get<int>(kOfxImageClipPropContinuousSamples) != 0;
    preferences.frameVarying = out.get<int>(kOfxImageEffectFrameVarying) != 0;
    return preferences;
}

std::optional<Identity> Instance::identity(const RenderRequest& request) {
    constexpr const char* kAction = kOfxImageEffectActionIsIdentity;
    const OfxRectI window = request.window ? *request.window : request.output ? request.output->bounds() : OfxRectI{};
    PropertySet in(host_.options().extensions), out(host_.options().extensions);
    setFrame(in, request.time, request.scale);
    in.set(kOfxImageEffectPropFieldToRender, request.field);
    in.set(kOfxImageEffectPropRenderWindow, std::vector{window.x1, window.y1, window.x2, window.y2});
    in.set(kOfxImageEffectPropThumbnailRender, 0);
    out.set(kOfxPropName, "");
    out.set(kOfxPropTime, request.time);
    if (!answered(*this, kAction, action(kAction, &in, &out))) return std::nullopt;
    const auto name = out.get<std::string>(kOfxPropName);
    if (name.empty()) return std::nullopt; // an answer without a clip names nothing to show instead
    return Identity{clip(name).name(), out.get<double>(kOfxPropTime)};
}

OfxStatus Instance::uplift(const Uplift& record) {
    if (record.data.size() > static_cast<std::size_t>(std::numeric_limits<int>::max()))
        throw Error("a legacy record is longer than its length can say");
    PropertySet in(host_.options().extensions);
    in.set(kOfxImageEffectPropOrvixUpliftGUID, record.guid);
    in.set<void*>(kOfxPropOrvixUpliftKeyframeData, record.keyframes);
    in.set<void*>(kOfxPropOrvixUpliftData, const_cast<std::byte*>(record.data.data()));
    in.set(kOfxPropOrvixUpliftDataLength, static_cast<int>(record.data.size()));
    return action(kOfxImageEffectActionOrvixKeyframeUplift, &in);
}

OfxStatus Instance::invokeHelp() { return action(kOfxImageEffectActionInvokeHelp); }
OfxStatus Instance::invokeAbout() { return action(kOfxImageEffectActionInvokeAbout); }
OfxStatus Instance::purgeCaches() { return action(kOfxActionPurgeCaches); }
OfxStatus Instance::syncPrivateData() { return action(kOfxActionSyncPrivateData); }
OfxStatus Instance::beginEdit() { return action(kOfxActionBeginInstanceEdit); }
OfxStatus Instance::endEdit() { return action(kOfxActionEndInstanceEdit); }

} // namespace host
