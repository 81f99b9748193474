#include "basemap/ShorelineFile.h"

#include <hdf5.h>
#include <netcdf.h>

namespace kelvox {

namespace {
/// The finest file there is has eleven million points.
constexpr std::size_t mostValues = std::size_t{1} << 25;

class File {
public:
    explicit File(const std::filesystem::path& path)
        : m_path(path)
    {
        // Below, each attribute that is not there would be told on standard error: the library keeps
        // its silence by thread, and only the first one has it.
        H5Eset_auto2(H5E_DEFAULT, nullptr, nullptr);
        m_status = nc_open(path.c_str(), NC_NOWRITE, &m_id);
        m_isOpen = m_status == NC_NOERR;
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;
    ~File()
    {
        if (m_isOpen)
            nc_close(m_id);
    }
    /// Reads a list of numbers; after a failure nothing more is read.
    template <typename T>
    void read(const char* name, std::vector<T>& values, int (*get)(int, int, T*))
    {
        int variable = 0;
        int dimensions = 0;
        int dimension = 0;
        std::size_t length = 0;
        if (m_status != NC_NOERR || !check(nc_inq_varid(m_id, name, &variable), name)
            || !check(nc_inq_varndims(m_id, variable, &dimensions), name))
            return;
        if (dimensions != 1) {
            check(NC_EDIMSIZE, name);
            return;
        }
        if (!check(nc_inq_vardimid(m_id, variable, &dimension), name)
            || !check(nc_inq_dimlen(m_id, dimension, &length), name))
            return;
        if (length > mostValues) {
            check(NC_EDIMSIZE, name);
            return;
        }
        values.resize(length);
        check(get(m_id, variable, values.data()), name);
    }
    [[nodiscard]] int status() const { return m_status; }
    [[nodiscard]] bool isOpen() const { return m_isOpen; }
    [[nodiscard]] Error error() const
    {
        std::string message = m_path.string() + ": ";
        if (m_isOpen)
            message += m_where + ": ";
        message += nc_strerror(m_status);
        return {m_isOpen ? Error::Code::BadSyntax : Error::Code::CannotOpen, message, 0};
    }

private:
    bool check(int status, const char* where)
    {
        m_status = status;
        m_where = where;
        return status == NC_NOERR;
    }
    std::filesystem::path m_path;
    std::string m_where;
    int m_id = 0;
    int m_status = NC_NOERR;
    bool m_isOpen = false;
};

int bits(int file, int variable, std::uint16_t* values)
{
    // Kept as signed numbers: the upper half of a bin is negative.
    return nc_get_var_short(file, variable, reinterpret_cast<short*>(values));
}
} // namespace

Result<ShorelineTables> readShoreline(const std::filesystem::path& path)
{
    File file(path);
    ShorelineTables tables;
    std::vector<int> columns;
    std::vector<int> rows;
    file.read("N_bins_in_360_longitude_range", columns, nc_get_var_int);
    file.read("N_bins_in_180_degree_latitude_range", rows, nc_get_var_int);
    file.read("Id_of_first_segment_in_a_bin", tables.firstSegment, nc_get_var_int);
    file.read("N_segments_in_a_bin", tables.segmentCount, nc_get_var_short);
    // With the edge of the ice as the Antarctic shore, not the line where it leaves the ground: a
    // ship meets the ice first.
    file.read("Embedded_node_levels_in_a_bin", tables.cornerLevels, nc_get_var_short);
    file.read("Embedded_npts_levels_exit_entry_for_a_segment", tables.segment, nc_get_var_int);
    file.read("Id_of_first_point_in_a_segment", tables.firstPoint, nc_get_var_int);
    file.read("Relative_longitude_from_SW_corner_of_bin", tables.x, bits);
    file.read("Relative_latitude_from_SW_corner_of_bin", tables.y, bits);
    if (file.status() != NC_NOERR)
        return tl::unexpected(file.error());
    if (columns.size() != 1 || rows.size() != 1)
        return failure(Error::Code::BadSyntax, path.string() + ": the number of bins is missing");
    tables.columns = columns.front();
    tables.rows = rows.front();
    return tables;
}

} // namespace kelvox
