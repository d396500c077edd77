<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="zh_CN" sourcelanguage="en">
<context>
    <name></name>
    <message id="TXT_RID_SOFTKEY_BACK">
        <source>Back</source>
        <translation>返回</translation>
    </message>
    <message id="TXT_RID_SOFTKEY_OPTIONS">
        <source>Options</source>
        <translation>选项</translation>
    </message>
    <message id="TXT_RID_SOFTKEY_OK">
        <source>OK</source>
        <translation>确定</translation>
    </message>
    <message id="TXT_RID_SOFTKEY_CANCEL">
        <source>Cancel</source>
        <translation>取消</translation>
    </message>
    <message id="TXT_RID_SOFTKEY_YES">
        <source>Yes</source>
        <translation>是</translation>
    </message>
    <message id="TXT_RID_SOFTKEY_NO">
        <source>No</source>
        <translation>否</translation>
    </message>
    <message id="TXT_RID_LABEL_FORMITEM_TITLE">
        <source>Title:</source>
        <translation>标题：</translation>
    </message>
    <message id="TXT_RID_EMPHASIS_TITLE">
        <source>Title:</source>
        <translation>标题：</translation>
    </message>
    <message id="TXT_RID_LABEL_FORMITEM_DUE_DATE">
        <source>Due Date:</source>
        <translation>到期日：</translation>
    </message>
    <message id="TXT_RID_EMPHASIS_DUE_DATE">
        <source>Due Date:</source>
        <translation>到期日：</translation>
    </message>
    <message id="TXT_RID_STANDARD_NO_DUE_DATE">
        <source>No Due Date</source>
        <translation>无到期日</translation>
    </message>
    <message id="TXT_RID_LABEL_FORMITEM_STATUS">
        <source>Status:</source>
        <translation>状态：</translation>
    </message>
    <message id="TXT_RID_EMPHASIS_STATUS">
        <source>Status:</source>
        <translation>状态：</translation>
    </message>
    <message id="TXT_RID_STANDARD_COMPLETED">
        <source>Completed</source>
        <translation>已完成</translation>
    </message>
    <message id="TXT_RID_STANDARD_INCOMPLETE">
        <source>Incomplete</source>
        <translation>未完成</translation>
    </message>
    <message id="TXT_RID_LABEL_FORMITEM_PRIORITY">
        <source>Priority:</source>
        <translation>优先级：</translation>
    </message>
    <message id="TXT_RID_EMPHASIS_PRIORITY">
        <source>Priority:</source>
        <translation>优先级：</translation>
    </message>
    <message id="TXT_RID_SETTING_B_HIGH">
        <source>High</source>
        <translation>高</translation>
    </message>
    <message id="TXT_RID_SETTING_B_NORMAL">
        <source>Normal</source>
        <translation>中</translation>
    </message>
    <message id="TXT_RID_SETTING_B_LOW">
        <source>Low</source>
        <translation>低</translation>
    </message>
    <message id="TXT_RID_STANDARD_UNTITLED">
        <source>Untitled</source>
        <translation>无标题</translation>
    </message>
    <message id="TXT_RID_STANDARD_NO_CATEGORY">
        <source>No Category</source>
        <translation>无类别</translation>
    </message>
    <message id="TXT_RID_STANDARD_CATEGORY_MEETING">
        <source>Meeting</source>
        <translation>会议</translation>
    </message>
    <message id="TXT_RID_STANDARD_CATEGORY_VACATION">
        <source>Vacation</source>
        <translation>休假</translation>
    </message>
    <message id="TXT_RID_STANDARD_CATEGORY_APPOINTMENT">
        <source>Appointment</source>
        <translation>约会</translation>
    </message>
    <message id="TXT_RID_STANDARD_CATEGORY_PARTY">
        <source>Party</source>
        <translation>聚会</translation>
    </message>
    <message id="TXT_RID_STANDARD_YESTERDAY">
        <source>Yesterday</source>
        <translation>昨天</translation>
    </message>
    <message id="TXT_RID_STANDARD_TODAY">
        <source>Today</source>
        <translation>今天</translation>
    </message>
    <message id="TXT_RID_STANDARD_TOMORROW">
        <source>Tomorrow</source>
        <translation>明天</translation>
    </message>
    <message id="TXT_RID_LABEL_FORMITEM_NOTES">
        <source>Notes:</source>
        <translation>备注：</translation>
    </message>
    <message id="TXT_RID_EMPHASIS_NOTE">
        <source>Notes:</source>
        <translation>备注：</translation>
    </message>
    <message id="TXT_RID_LABEL_FORMITEM_CATEGORY">
        <source>Category:</source>
        <translation>类别：</translation>
    </message>
    <message id="TXT_RID_LABEL_FORMITEM_ALARM">
        <source>Alarm:</source>
        <translation>提醒：</translation>
    </message>
    <message id="TXT_RID_HEADER_NEW_TASK">
        <source>New Task</source>
        <translation>新建任务</translation>
    </message>
    <message id="TXT_RID_HEADER_EDIT_TASK">
        <source>Edit Task</source>
        <translation>编辑任务</translation>
    </message>
    <message id="TXT_RID_HEADER_DUE_DATE">
        <source>Due Date</source>
        <translation>到期日</translation>
    </message>
    <message id="TXT_RID_HEADER_ALARM">
        <source>Alarm</source>
        <translation>提醒</translation>
    </message>
    <message id="TXT_RID_STANDARD_NO_ALARM">
        <source>No Alarm</source>
        <translation>无提醒</translation>
    </message>
    <message id="TXT_RID_LABEL_TIME">
        <source>Time</source>
        <translation>时间</translation>
    </message>
    <message id="TXT_RID_STANDARD_NEW_CATEGORY">
        <source>New Category…</source>
        <translation>新建类别…</translation>
    </message>
    <message id="TXT_RID_HEADER_NEW_CATEGORY">
        <source>New Category</source>
        <translation>新建类别</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_CATEGORY_NAME">
        <source>Name of the category:</source>
        <translation>类别名称：</translation>
    </message>
    <message id="FMT_RID_LABEL_CHARACTERS_LEFT_1">
        <source>Characters left: %1</source>
        <translation>还可输入 %1 个字符</translation>
    </message>
    <message id="TXT_RID_SOFTKEY_SAVE">
        <source>Save</source>
        <translation>保存</translation>
    </message>
    <message id="TXT_RID_OPTION_CANCEL_EDIT">
        <source>Cancel Edit</source>
        <translation>取消编辑</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_DISCARD_CHANGES">
        <source>Discard the changes?</source>
        <translation>放弃更改吗？</translation>
    </message>
    <message id="TXT_RID_HEADER_NOT_SAVED">
        <source>Not Saved</source>
        <translation>未保存</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_TASK_NOT_SAVED">
        <source>The task could not be saved.</source>
        <translation>无法保存任务。</translation>
    </message>
    <message id="TXT_RID_OPTION_EDIT">
        <source>Edit</source>
        <translation>编辑</translation>
    </message>
    <message id="TXT_RID_OPTION_SHARE_VIA">
        <source>Share via</source>
        <translation>分享方式</translation>
    </message>
    <message id="TXT_RID_OPTION_BLUETOOTH">
        <source>Bluetooth</source>
        <translation>蓝牙</translation>
    </message>
    <message id="TXT_RID_OPTION_MESSAGE">
        <source>Message</source>
        <translation>信息</translation>
    </message>
    <message id="TXT_RID_OPTION_DELETE">
        <source>Delete</source>
        <translation>删除</translation>
    </message>
    <message id="TXT_RID_STANDARD_OVERDUE">
        <source>Overdue</source>
        <translation>已过期</translation>
    </message>
    <message id="TXT_RID_STANDARD_SEARCH">
        <source>Search</source>
        <translation>搜索</translation>
    </message>
    <message id="TXT_RID_STANDARD_CATEGORY">
        <source>Category</source>
        <translation>类别</translation>
    </message>
    <message id="TXT_RID_STANDARD_ALL_CATEGORIES">
        <source>All Categories</source>
        <translation>所有类别</translation>
    </message>
    <message id="TXT_RID_STANDARD_UNDO">
        <source>Undo</source>
        <translation>撤销</translation>
    </message>
    <message id="TXT_RID_STANDARD_TASK_DELETED">
        <source>Task deleted</source>
        <translation>任务已删除</translation>
    </message>
    <message id="TXT_RID_STANDARD_TASK_IMPORTED">
        <source>Task imported.</source>
        <translation>已导入任务。</translation>
    </message>
    <message id="FMT_RID_STANDARD_1_TASKS_IMPORTED">
        <source>%1 tasks imported.</source>
        <translation>已导入 %1 个任务。</translation>
    </message>
    <message id="TXT_RID_STANDARD_TASK_UPDATED">
        <source>Task updated.</source>
        <translation>已更新任务。</translation>
    </message>
    <message id="FMT_RID_STANDARD_1_TASKS_UPDATED">
        <source>%1 tasks updated.</source>
        <translation>已更新 %1 个任务。</translation>
    </message>
    <message id="TXT_RID_HEADER_VCALENDAR">
        <source>vCalendar</source>
        <translation>vCalendar</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_SENDING_NEEDS_LIBICAL">
        <source>The task can't be sent: libical (libical3) is not installed.</source>
        <translation>无法发送任务：未安装 libical (libical3)。</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_VCALENDAR_NEEDS_LIBICAL">
        <source>vCalendar files can't be read: libical (libical3) is not installed.</source>
        <translation>无法读取 vCalendar 文件：未安装 libical (libical3)。</translation>
    </message>
    <message id="TXT_RID_STANDARD_NOTHING_NEW">
        <source>Nothing new in the file.</source>
        <translation>文件中没有新内容。</translation>
    </message>
    <message id="TXT_RID_STANDARD_LAST_DATE">
        <source>Completed: this was the last date.</source>
        <translation>已完成：这是最后一次。</translation>
    </message>
    <message id="TXT_RID_STANDARD_NO_NEXT_DATE">
        <source>Completed: the next date can't be computed.</source>
        <translation>已完成：无法计算下一个日期。</translation>
    </message>
    <message id="TXT_RID_STANDARD_TASK_REPEATS">
        <source>The task repeats.</source>
        <translation>该任务会重复。</translation>
    </message>
    <message id="FMT_RID_STANDARD_NEXT_DATE_1">
        <source>Next date: %1</source>
        <translation>下一个日期：%1</translation>
    </message>
    <message id="TXT_RID_LABEL_FORMITEM_REPEATS">
        <source>Repeats:</source>
        <translation>重复：</translation>
    </message>
    <message id="TXT_RID_STANDARD_REPEATS_YES">
        <source>Yes</source>
        <translation>是</translation>
    </message>
    <message id="TXT_RID_STANDARD_DAILY">
        <source>Daily</source>
        <translation>每天</translation>
    </message>
    <message id="FMT_RID_STANDARD_EVERY_1_DAYS">
        <source>Every %1 days</source>
        <translation>每 %1 天</translation>
    </message>
    <message id="TXT_RID_STANDARD_WEEKLY">
        <source>Weekly</source>
        <translation>每周</translation>
    </message>
    <message id="FMT_RID_STANDARD_EVERY_1_WEEKS">
        <source>Every %1 weeks</source>
        <translation>每 %1 周</translation>
    </message>
    <message id="TXT_RID_STANDARD_MONTHLY">
        <source>Monthly</source>
        <translation>每月</translation>
    </message>
    <message id="FMT_RID_STANDARD_EVERY_1_MONTHS">
        <source>Every %1 months</source>
        <translation>每 %1 个月</translation>
    </message>
    <message id="TXT_RID_STANDARD_YEARLY">
        <source>Yearly</source>
        <translation>每年</translation>
    </message>
    <message id="FMT_RID_STANDARD_EVERY_1_YEARS">
        <source>Every %1 years</source>
        <translation>每 %1 年</translation>
    </message>
    <message id="FMT_RID_STANDARD_1_OF_2_IMPORTED">
        <source>%1 of %2 tasks imported…</source>
        <translation>已导入 %1/%2 个任务…</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_NOT_ALL_IMPORTED">
        <source>Not all tasks could be imported.</source>
        <translation>部分任务无法导入。</translation>
    </message>
    <message id="FMT_RID_INSTRUCTIONALTXT_NO_TASK_IN_1">
        <source>There is no task in %1.</source>
        <translation>%1 中没有任务。</translation>
    </message>
    <message id="TXT_RID_STANDARD_SYNCHRONIZING">
        <source>Synchronizing…</source>
        <translation>正在同步…</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_SYNCHRONIZING_FAILED">
        <source>The synchronization could not be started.</source>
        <translation>无法开始同步。</translation>
    </message>
    <message id="TXT_RID_STANDARD_NO_SYNC_PARTNER">
        <source>No sync partner</source>
        <translation>没有同步伙伴</translation>
    </message>
    <message id="FMT_RID_STANDARD_1_TASKS_DELETED">
        <source>%1 tasks deleted</source>
        <translation>已删除 %1 个任务</translation>
    </message>
    <message id="FMT_RID_HEADER_1_SELECTED">
        <source>%1 Selected</source>
        <translation>已选择 %1 项</translation>
    </message>
    <message id="TXT_RID_SOFTKEY_NEW">
        <source>New</source>
        <translation>新建</translation>
    </message>
    <message id="TXT_RID_SOFTKEY_EXIT">
        <source>Exit</source>
        <translation>退出</translation>
    </message>
    <message id="TXT_RID_SOFTKEY_DONE">
        <source>Done</source>
        <translation>完成</translation>
    </message>
    <message id="TXT_RID_OPTION_ALL_TASKS">
        <source>All Tasks</source>
        <translation>所有任务</translation>
    </message>
    <message id="TXT_RID_OPTION_DUE_TASKS">
        <source>Due Tasks</source>
        <translation>到期任务</translation>
    </message>
    <message id="TXT_RID_OPTION_INCOMPLETE_TASKS">
        <source>Incomplete Tasks</source>
        <translation>未完成任务</translation>
    </message>
    <message id="TXT_RID_OPTION_COMPLETED_TASKS">
        <source>Completed Tasks</source>
        <translation>已完成任务</translation>
    </message>
    <message id="TXT_RID_OPTION_SELECT_ALL">
        <source>Select All</source>
        <translation>全选</translation>
    </message>
    <message id="TXT_RID_OPTION_UNSELECT_ALL">
        <source>Unselect All</source>
        <translation>取消全选</translation>
    </message>
    <message id="TXT_RID_OPTION_VIEW_BY">
        <source>View by</source>
        <translation>查看方式</translation>
    </message>
    <message id="TXT_RID_OPTION_CREATE_NEW_TASK">
        <source>Create New Task</source>
        <translation>新建任务</translation>
    </message>
    <message id="TXT_RID_OPTION_SHARE_TASK_VIA">
        <source>Share Task via</source>
        <translation>任务发送方式</translation>
    </message>
    <message id="TXT_RID_OPTION_SYNCHRONIZE">
        <source>Synchronize</source>
        <translation>同步</translation>
    </message>
    <message id="TXT_RID_OPTION_SELECT_MULTIPLE">
        <source>Select Multiple</source>
        <translation>选择多项</translation>
    </message>
    <message id="TXT_RID_OPTION_SORT_BY">
        <source>Sort by</source>
        <translation>排序方式</translation>
    </message>
    <message id="TXT_RID_OPTION_SORT_DUE_DATE">
        <source>Due Date</source>
        <translation>到期日</translation>
    </message>
    <message id="TXT_RID_OPTION_SORT_PRIORITY">
        <source>Priority</source>
        <translation>优先级</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_NO_TASKS_YET">
        <source>There are no tasks yet.

Press New to write one down, or drop a calendar file here.</source>
        <translation>还没有任务。

按“新建”写下一个任务，或将日历文件拖到这里。</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_NO_DUE_TASKS">
        <source>Nothing is due today.

Options, View by shows the other tasks.</source>
        <translation>今天没有到期的任务。

“选项”中的“查看方式”可显示其他任务。</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_NO_INCOMPLETE_TASKS">
        <source>Nothing is left to do.

Press New to write a task down.</source>
        <translation>没有待办事项。

按“新建”写下一个任务。</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_NO_COMPLETED_TASKS">
        <source>No task is completed yet.

Touch the box of a task, or press Space, to check it off.</source>
        <translation>还没有已完成的任务。

点按任务的方框或按空格键即可勾选完成。</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_TASKS_NOT_DELETED">
        <source>Not all tasks could be deleted.</source>
        <translation>部分任务无法删除。</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_TASKS_NOT_READ">
        <source>The tasks can't be read.

The log says why.</source>
        <translation>无法读取任务。

日志中有原因说明。</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_SEARCHING">
        <source>Searching…</source>
        <translation>正在搜索…</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_NO_TASK_FOUND">
        <source>No task matches.

Empty the search line and choose all categories to see more.</source>
        <translation>没有匹配的任务。

清空搜索栏并选择所有类别可查看更多。</translation>
    </message>
    <message id="TXT_RID_HEADER_SAVED_TO_TASK_LIST">
        <source>Saved to Task List</source>
        <translation>已保存到任务列表</translation>
    </message>
    <message id="FMT_RID_INSTRUCTIONALTXT_1_SAVED_TO_TASK_LIST">
        <source>%1 saved to Task List</source>
        <translation>%1 已保存到任务列表</translation>
    </message>
    <message id="FMT_RID_INSTRUCTIONALTXT_1_TASKS_SAVED">
        <source>%1 tasks saved to Task List</source>
        <translation>%1 个任务已保存到任务列表</translation>
    </message>
    <message id="TXT_RID_HEADER_MEMORY_FULL">
        <source>Memory Full</source>
        <translation>内存已满</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_TASK_CANNOT_BE_CREATED_PHONE_MEMORY_IS_FULL_PLEASE_DELETE_SOME_FILES_TO_CREATE_SPACE_IN_MEMORY">
        <source>Task cannot be created because phone memory is full. Please delete some files to create space in memory.</source>
        <translation>手机内存已满，无法创建任务。请删除一些文件以释放内存空间。</translation>
    </message>
    <message id="TXT_RID_HEADER_APPLICATION_LOCK">
        <source>Application Lock</source>
        <translation>应用程序锁</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_ENTER_LOCK_CODE">
        <source>Enter the lock code:</source>
        <translation>请输入锁定密码：</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_WRONG_LOCK_CODE">
        <source>Wrong code. Please try again.</source>
        <translation>密码错误，请重试。</translation>
    </message>
    <message id="FMT_RID_INSTRUCTIONALTXT_TOO_MANY_WRONG_LOCK_CODES_1">
        <source>Too many wrong codes. Next try in %1.</source>
        <translation>密码错误次数过多，请在 %1 后重试。</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_LOCK_CODE_CANNOT_BE_CHECKED">
        <source>The code cannot be checked.</source>
        <translation>无法验证密码。</translation>
    </message>
    <message id="TXT_RID_HEADER_SEND_VIA_BLUETOOTH">
        <source>Send via Bluetooth</source>
        <translation>通过蓝牙发送</translation>
    </message>
    <message id="TXT_RID_SOFTKEY_SEND">
        <source>Send</source>
        <translation>发送</translation>
    </message>
    <message id="FMT_RID_STANDARD_1_PAIRED">
        <source>%1, paired</source>
        <translation>%1，已配对</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_CHOOSE_DEVICE">
        <source>Choose a device.</source>
        <translation>请选择设备。</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_CHOOSE_DEVICE_SEARCHING">
        <source>Choose a device. Searching for more…</source>
        <translation>请选择设备。正在搜索更多设备…</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_NO_KNOWN_DEVICES_SEARCHING">
        <source>No known devices. Searching for devices in reach…</source>
        <translation>没有已知设备。正在搜索附近的设备…</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_NO_DEVICES_FOUND">
        <source>No devices found.</source>
        <translation>未找到设备。</translation>
    </message>
    <message id="FMT_RID_INSTRUCTIONALTXT_SENDING_1_TO_2">
        <source>Sending %1 to %2</source>
        <translation>正在将%1发送到%2</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_CONNECTING">
        <source>Connecting…</source>
        <translation>正在连接…</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_WAITING_FOR_OTHER_DEVICE">
        <source>Waiting for the other device…</source>
        <translation>正在等待对方设备…</translation>
    </message>
    <message id="FMT_RID_INSTRUCTIONALTXT_1_OF_2">
        <source>%1 of %2</source>
        <translation>%1 / %2</translation>
    </message>
    <message id="FMT_RID_INSTRUCTIONALTXT_SENT_TO_1">
        <source>Sent to %1.</source>
        <translation>已发送到%1。</translation>
    </message>
    <message id="FMT_RID_INSTRUCTIONALTXT_SENDING_TO_1_FAILED">
        <source>%1 has not received it: it was declined, or the connection broke.</source>
        <translation>%1未收到：对方已拒绝，或连接已中断。</translation>
    </message>
    <message id="FMT_RID_INSTRUCTIONALTXT_NO_CONNECTION_TO_1">
        <source>No connection to %1. Is it switched on and in reach?</source>
        <translation>无法连接到%1。设备是否已开启并在附近？</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_NO_BLUETOOTH_ADAPTER">
        <source>Bluetooth cannot be used: no adapter was found.</source>
        <translation>无法使用蓝牙：未找到蓝牙适配器。</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_BLUETOOTH_IS_OFF">
        <source>Bluetooth is switched off. Switch it on and try again.</source>
        <translation>蓝牙已关闭。请打开蓝牙后重试。</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_NO_OBJECT_PUSH_SERVICE">
        <source>Nothing can be sent: the Bluetooth sending service is missing.</source>
        <translation>无法发送：缺少蓝牙发送服务。</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_OBJECT_NOT_PREPARED">
        <source>Nothing was sent: there is no room for a copy to send.</source>
        <translation>未发送：没有空间存放要发送的副本。</translation>
    </message>
    <message id="TXT_RID_STANDARD_TASKS">
        <source>Tasks</source>
        <translation>任务</translation>
    </message>
    <message id="TXT_RID_STANDARD_OPEN">
        <source>Open</source>
        <translation>打开</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_TASK_SAVED_NOT_SHOWN">
        <source>Saved. This view does not show the task.</source>
        <translation>已保存。此视图不显示该任务。</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_TASK_WAS_DELETED">
        <source>The task has been deleted.</source>
        <translation>该任务已被删除。</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_VIEW_WITHOUT_IT">
        <source>This view does not show it.</source>
        <translation>此视图不显示它。</translation>
    </message>
    <message id="TXT_RID_INSTRUCTIONALTXT_VIEW_WITHOUT_ALL">
        <source>This view does not show all of them.</source>
        <translation>此视图不显示全部。</translation>
    </message>
</context>
</TS>
