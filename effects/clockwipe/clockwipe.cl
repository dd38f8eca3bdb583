// Clock wipe; mirrors the rows of the CPU.

_Pragma("OPENCL FP_CONTRACT OFF")

// Bytes mix in 256ths, truncated towards zero.
float4 mixed(float4 f, float4 t, float weight, int bytes)
{
    if (!bytes) return (t - f) * weight + f;
    const int4 from = convert_int4(f * 255.0f + 0.5f), to = convert_int4(t * 255.0f + 0.5f);
    return convert_float4(from + (to - from) * (int)(weight * 255.0f + 0.5f) / 256) / 255.0f;
}

__kernel void k2f90d1a860(__read_only image2d_t from, __read_only image2d_t to, __write_only image2d_t dst, int width,
                          int height, int direction, float p, float2 aspect, float feather_angle)
{
    const sampler_t nearest = CLK_NORMALIZED_COORDS_FALSE | CLK_ADDRESS_CLAMP_TO_EDGE | CLK_FILTER_NEAREST;
    const int2 at = (int2)(get_global_id(0), get_global_id(1));
    if (at.x >= width || at.y >= height) return; // the global size is rounded up
    const int bytes = get_image_channel_data_type(dst) == CLK_UNORM_INT8;
    const float turn = 6.2831855f;

    const float4 f = read_imagef(from, nearest, at), t = read_imagef(to, nearest, at);
    const float column = at.x - width / 2;
    const float u = (direction == 0 ? column : -column) * aspect.x;
    const float v = (height / 2 + 0.5f - (height - 1 - at.y)) * aspect.y;
    float theta = atan2(u, v);
    if (theta < 0.0f) theta += turn;

    const float feather = feather_angle * 0.017453292f, swept = (feather + turn) * p;
    const float least = asin(1.4142135f / max(sqrt(u * u + v * v), 2.0f)), w = max(least, feather);
    const float start = min(feather + turn, swept - w);
    if (p < 1.0f && theta >= swept) {
        write_imagef(dst, at, f);
    } else if (p >= 1.0f || theta <= start) {
        write_imagef(dst, at, t);
    } else {
        const float s = 1.0f - (theta - start) / w;
        write_imagef(dst, at, mixed(f, t, (3.0f - 2.0f * s) * s * s, bytes));
    }
}
