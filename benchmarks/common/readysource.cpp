// SPDX-License-Identifier: BSD-3-Clause
#include "readysource.h"

#include "beat.h"

#include <gst/base/gstpushsrc.h>

#include <cstdint>
#include <new>
#include <vector>

namespace {

constexpr std::size_t PictureSize = 640 * 480 * 3 / 2;

struct ReadySource
{
    GstPushSrc base;
    Beat beat;
    std::vector<std::uint8_t> memory; // one picture, shared by all buffers
};

struct ReadySourceClass
{
    GstPushSrcClass base;
};

gpointer parentClass = nullptr;

ReadySource *readySource(void *instance)
{
    return static_cast<ReadySource *>(instance);
}

GstFlowReturn create(GstPushSrc *instance, GstBuffer **buffer)
{
    ReadySource *const source = readySource(instance);
    source->beat.wait();
    *buffer = gst_buffer_new_wrapped_full(GST_MEMORY_FLAG_READONLY, source->memory.data(),
                                          PictureSize, 0, PictureSize, gst_object_ref(instance),
                                          gst_object_unref);
    return GST_FLOW_OK;
}

void finalize(GObject *instance)
{
    ReadySource *const source = readySource(instance);
    source->memory.~vector();
    source->beat.~Beat();
    G_OBJECT_CLASS(parentClass)->finalize(instance);
}

void initialize(GTypeInstance *instance, gpointer)
{
    ReadySource *const source = readySource(instance);
    new (&source->beat) Beat;
    new (&source->memory) std::vector<std::uint8_t>(PictureSize, 128);
    auto *const base = static_cast<GstBaseSrc *>(static_cast<void *>(instance));
    gst_base_src_set_live(base, TRUE);
    gst_base_src_set_format(base, GST_FORMAT_TIME);
    gst_base_src_set_do_timestamp(base, TRUE);
}

void initializeClass(gpointer classData, gpointer)
{
    parentClass = g_type_class_peek_parent(classData);
    static_cast<GObjectClass *>(classData)->finalize = finalize;
    static_cast<GstPushSrcClass *>(classData)->create = create;
    auto *const element = static_cast<GstElementClass *>(classData);
    GstCaps *const caps =
            gst_caps_from_string("video/x-raw,format=I420,width=640,height=480,framerate=30/1");
    gst_element_class_add_pad_template(
            element, gst_pad_template_new("src", GST_PAD_SRC, GST_PAD_ALWAYS, caps));
    gst_caps_unref(caps);
    gst_element_class_set_static_metadata(element, "Ready pictures", "Source/Video",
                                          "Live pictures that cost nothing to make", "Ocelle");
}

} // namespace

bool registerReadySource()
{
    const GType type = g_type_register_static_simple(
            GST_TYPE_PUSH_SRC, "OcelleReadySource", sizeof(ReadySourceClass), initializeClass,
            sizeof(ReadySource), initialize, GTypeFlags(0));
    return gst_element_register(nullptr, "readysrc", GST_RANK_NONE, type) == TRUE;
}
